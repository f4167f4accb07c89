#pragma once
#include <utility>

#include "platform/graphics/image.h"

namespace ostra::test {

/// The format of a picture without padding at the end of its rows. `components` counts alpha or a skipped
/// one.
inline CGImage::Format packedFormat(std::size_t width, std::size_t height, std::size_t bits,
                                    std::size_t components, CGImageAlphaInfo alpha) {
  return {.width = width,
          .height = height,
          .bitsPerComponent = bits,
          .bitsPerPixel = bits * components,
          .bytesPerRow = width * bits * components / 8,
          .bitmapInfo = static_cast<CGBitmapInfo>(alpha) | (bits == 16 ? kCGBitmapByteOrder16Little : 0)};
}

/// A picture of the given bytes, and zeroes behind them.
inline CGImageRef makeImage(const CGImage::Format& format, CGColorSpaceRef space, Bytes bytes = {}) {
  bytes.resize(format.bytesPerRow * format.height);
  return std::make_shared<const CGImage>(format, std::move(space), SharedBytes::adopt(std::move(bytes)),
                                         CGColorRenderingIntent::standard);
}

}  // namespace ostra::test
