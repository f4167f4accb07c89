#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/foundation/bytes.h"
#include "platform/graphics/bitmap_info.h"
#include "platform/graphics/color_space.h"

namespace ostra {

enum class CGColorRenderingIntent {
  standard = 0,
  absoluteColorimetric,
  relativeColorimetric,
  perceptual,
  saturation
};

class CGImage;
using CGImageRef = std::shared_ptr<const CGImage>;

/// Pixels and their meaning. Immutable, shared, safe on any thread. The top row is first in memory;
/// components are unsigned integers of 8 bits, or of 16 bits in the machine's (little-endian) order.
class CGImage {
 public:
  struct Format {
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t bitsPerComponent = 0;
    std::size_t bitsPerPixel = 0;
    std::size_t bytesPerRow = 0;
    CGBitmapInfo bitmapInfo = 0;
  };

  /// `space` may be null: a picture that does not say what its colours mean. Null when the numbers do not fit
  /// together or the provider holds too few bytes.
  static CGImageRef create(const Format& format, CGColorSpaceRef space, SharedBytes provider,
                           bool shouldInterpolate, CGColorRenderingIntent intent);

  std::size_t width() const { return format_.width; }
  std::size_t height() const { return format_.height; }
  std::size_t bitsPerComponent() const { return format_.bitsPerComponent; }
  std::size_t bitsPerPixel() const { return format_.bitsPerPixel; }
  std::size_t bytesPerRow() const { return format_.bytesPerRow; }
  CGBitmapInfo bitmapInfo() const { return format_.bitmapInfo; }
  CGImageAlphaInfo alphaInfo() const;
  const CGColorSpaceRef& colorSpace() const { return space_; }
  const std::uint8_t* data() const { return pixels_.view.data(); }
  const SharedBytes& pixels() const { return pixels_; }
  CGColorRenderingIntent renderingIntent() const { return intent_; }

  /// For the creating function and for tests that need a picture which it would refuse.
  CGImage(const Format& format, CGColorSpaceRef space, SharedBytes provider, CGColorRenderingIntent intent);

 private:
  Format format_;
  CGColorSpaceRef space_;
  SharedBytes pixels_;
  CGColorRenderingIntent intent_;
};

}  // namespace ostra
