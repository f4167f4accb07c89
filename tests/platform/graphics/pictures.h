#pragma once
#include <vector>

#include "platform/graphics/bitmap_context.h"

namespace ostra::test {

/// Pictures of one row, described by their numbers.
struct Picture {
  std::vector<unsigned> components;  // of all pixels, in memory order
  std::size_t bits = 8;
  std::size_t perPixel = 3;
  CGImageAlphaInfo alpha = CGImageAlphaInfo::none;
  CGColorSpaceRef space;
  CGColorRenderingIntent intent = CGColorRenderingIntent::standard;
};

CGImageRef makeImage(const Picture& picture);

/// The surface for `space` at this depth, one row: gray, RGB with a skipped or premultiplied fourth, or CMYK.
std::unique_ptr<CGBitmapContext> makeSurface(std::size_t width, const CGColorSpaceRef& space,
                                             std::size_t bits, bool withAlpha);

CGRect all(const CGBitmapContext& context);

/// The first row of a surface, all stored components.
std::vector<unsigned> readRow(CGBitmapContext& context);

/// The picture drawn on a fresh surface.
std::vector<unsigned> drawn(const Picture& picture, const CGColorSpaceRef& space, std::size_t bits,
                            bool withAlpha);

/// The same, over opaque white.
std::vector<unsigned> drawnOverWhite(const Picture& picture, const CGColorSpaceRef& space, std::size_t bits);

}  // namespace ostra::test
