#pragma once
#include "platform/imageio/codec.h"

namespace ostra {

/// PNG, third edition. Read: every depth and colour type, interlaced or not; palettes are expanded,
/// transparency becomes straight alpha; of an animation the default image. Written: gray and RGB with or
/// without alpha, 8 and 16 bits, not interlaced; CMYK is a fault.
bool matchesPng(FileBytes head);
Answer<std::unique_ptr<CodecReader>> openPng(FileBytes file, const Limits& limits);
Answer<Bytes> encodePng(const Pixels& pixels, const Properties* properties);

}  // namespace ostra
