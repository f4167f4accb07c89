#pragma once
#include <memory>

#include "platform/imageio/codec.h"

namespace ostra {

/// WebP (RIFF container): VP8, VP8L, or VP8X with profile, Exif, XMP and frames in chunks. Read only.
Answer<std::unique_ptr<CodecReader>> openWebp(FileBytes file, const Limits& limits);

}  // namespace ostra
