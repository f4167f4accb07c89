#include "platform/imageio/codecs/plain_pixels.h"

#include <algorithm>

namespace ostra {
namespace {

// Whether any of `size` bytes from `from` on is not 0.
bool saysAnything(const std::uint8_t* from, std::size_t size) {
  return std::any_of(from, from + size, [](std::uint8_t byte) { return byte != 0; });
}

}  // namespace

Layout plainLayout(std::uint32_t width, std::uint32_t height, unsigned bits, CGColorSpaceModel model,
                   bool alpha) {
  const bool gray = model == CGColorSpaceModel::monochrome;
  const unsigned components = gray ? (alpha ? 2 : 1) : 4;
  Layout layout;
  layout.width = width;
  layout.height = height;
  layout.bitsPerComponent = static_cast<std::uint8_t>(bits);
  layout.bitsPerPixel = static_cast<std::uint8_t>(components * bits);
  layout.bytesPerRow = std::size_t{width} * (layout.bitsPerPixel / 8u);
  layout.model = model;
  const CGImageAlphaInfo info = alpha  ? CGImageAlphaInfo::last
                                : gray ? CGImageAlphaInfo::none
                                       : CGImageAlphaInfo::noneSkipLast;
  layout.bitmapInfo = static_cast<CGBitmapInfo>(info) | (bits == 16 ? kCGBitmapByteOrder16Little : 0);
  return layout;
}

void makeOpaqueIfBlank(Layout& layout, std::uint8_t* pixels) {
  const std::size_t sample = layout.bitsPerComponent / 8u, pixel = layout.bitsPerPixel / 8u;
  const std::size_t colours = pixel - sample, size = layout.bytesPerRow * layout.height;
  bool coloured = false;
  for (std::size_t at = 0; at < size; at += pixel) {
    if (saysAnything(pixels + at + colours, sample)) return;
    coloured = coloured || saysAnything(pixels + at, colours);
  }
  if (!coloured) return;
  for (std::size_t at = 0; at < size; at += pixel)
    std::fill_n(pixels + at + colours, sample, std::uint8_t{255});
  if (layout.model == CGColorSpaceModel::monochrome) return;
  layout.bitmapInfo = (layout.bitmapInfo & ~kCGBitmapAlphaInfoMask) |
                      static_cast<CGBitmapInfo>(CGImageAlphaInfo::noneSkipLast);
}

}  // namespace ostra
