#pragma once
#include "platform/imageio/codec.h"
#include "platform/imageio/codecs/gif_blocks.h"

namespace ostra {

/// The first profile in the file, when it is one of RGB.
ProfileRecord readGifColour(ByteView file, const GifStructure& structure, const Limits& limits);

/// Throws `LimitExceeded`.
Properties readGifProperties(ByteView file, const GifStructure& structure, const Limits& limits);

}  // namespace ostra
