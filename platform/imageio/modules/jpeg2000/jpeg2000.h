#pragma once
#include <memory>

#include "platform/imageio/codec.h"

namespace ostra {

/// JPEG 2000: a codestream in the boxes of JP2 or JPX, or alone.
Answer<std::unique_ptr<CodecReader>> openJpeg2000(FileBytes file, const Limits& limits);
/// A JP2 file, its codestream without loss.
Answer<Bytes> encodeJpeg2000(const Pixels& pixels, const Properties* properties);

}  // namespace ostra
