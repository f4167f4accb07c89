#pragma once
#include "platform/imageio/codec.h"
#include "platform/imageio/codecs/png_chunks.h"

namespace ostra {

/// The pixels of the default image, without a profile. The library is given the chunks that make pixels and
/// no others; whatever it says against them is a fault: a checksum, bytes that are missing or too many, a
/// missing end.
Answer<Pixels> decodePngPixels(ByteView file, const PngStructure& structure, const Limits& limits);

}  // namespace ostra
