#pragma once
#include "engine/surface.h"

namespace ostra {

/// The image in a gray space. With alpha kept the result has 8 bits, whatever the source: no surface holds
/// gray with alpha, so its two planes are drawn apart and woven together. Null on failure.
CGImageRef convertToGray(const CGImage& image, const CGColorSpaceRef& graySpace, const SurfaceFormat& format);

/// The last resort where the platform makes no image of gray with alpha: an sRGB image of 8 bits in which
/// red, green and blue are the luma (BT.709 weights) of the encoded, premultiplied values. Null on failure.
CGImageRef grayFromLuma(const CGImage& image);

}  // namespace ostra
