#pragma once
#include "platform/imageio/codec.h"
#include "platform/imageio/codecs/gif_blocks.h"

namespace ostra {

/// The canvas with the first frame, without a profile. A frame with missing, surplus or impossible codes, or
/// with a pixel that is no entry of the palette, is a fault, and so is a file that is cut off behind it.
Answer<Pixels> decodeGifPixels(const GifStructure& structure, std::size_t fileSize, const Limits& limits);

}  // namespace ostra
