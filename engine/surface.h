#pragma once
#include <cstddef>
#include <memory>
#include <string_view>

#include "platform/graphics/bitmap_context.h"

namespace ostra {

/// A space that every platform has. Where it is missing, nothing could be converted rightly: the process
/// stops.
CGColorSpaceRef requiredColorSpace(std::string_view name);

/// What a surface should hold besides its space.
struct SurfaceFormat {
  bool keepAlpha = false;
  bool wide = false;  // 16 bits a component where there is such a format and the platform agrees, else 8
};

/// A surface as large as the image. RGB holds four components a pixel, red, green, blue, and premultiplied
/// alpha or a skipped one; gray and CMYK hold no alpha, so that keeping alpha gives null for them, as does
/// every other model.
std::unique_ptr<CGBitmapContext> makeSurface(const CGImage& image, const CGColorSpaceRef& space,
                                             const SurfaceFormat& format);

/// Makes the whole surface opaque white.
void fillWhite(CGBitmapContext& surface);
/// Draws the image over the whole surface, pixel onto pixel.
void drawWhole(CGBitmapContext& surface, const CGImage& image);

/// The image drawn into `space`; on opaque white unless alpha is kept. Null when there is no such surface or
/// drawing fails.
CGImageRef renderOnSurface(const CGImage& image, const CGColorSpaceRef& space, const SurfaceFormat& format);

}  // namespace ostra
