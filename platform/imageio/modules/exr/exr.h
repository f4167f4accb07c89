#pragma once
#include <memory>

#include "platform/imageio/codec.h"

namespace ostra {

/// OpenEXR, read only: scan lines and tiles in every compression. Of several parts the first, of a part the
/// red, green and blue, luminance with or without chroma, and alpha; linear light becomes 16 bits.
Answer<std::unique_ptr<CodecReader>> openExr(FileBytes file, const Limits& limits);

}  // namespace ostra
