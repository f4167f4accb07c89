#pragma once
#include "engine/surface.h"

namespace ostra {

/// The image with its colours inverted, in its own space where that is RGB or opaque gray, else in sRGB. Kept
/// alpha stays as it is; without it the image is put on white first. Null on failure.
CGImageRef invertImage(const CGImage& image, const SurfaceFormat& format);

}  // namespace ostra
