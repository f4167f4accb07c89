#pragma once
#include <memory>

#include "platform/imageio/codec.h"

namespace ostra {

// AVIF: the boxes of HEIF (ISO/IEC 23008-12), the pictures coded as AV1. Of a sequence the still that stands
// for it is decoded.
Answer<std::unique_ptr<CodecReader>> openAvif(FileBytes file, const Limits& limits);
Answer<std::unique_ptr<CodecReader>> openAvis(FileBytes file, const Limits& limits);

/// AV1 with full colour of 8 bits, or 12 for surfaces of 16; gray as one plane.
Answer<Bytes> encodeAvif(const Pixels& pixels, const Properties* properties);

}  // namespace ostra
