#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/graphics/bitmap_info.h"
#include "platform/graphics/color_space.h"
#include "platform/graphics/image.h"

namespace ostra {

struct CGRect {
  double x = 0, y = 0, width = 0, height = 0;
  friend bool operator==(const CGRect&, const CGRect&) = default;
};

enum class CGInterpolationQuality { standard = 0, none = 1, low = 2, high = 3, medium = 4 };

/// A drawing surface in memory. Fresh memory is zero: black, or fully transparent. One owner, one thread.
///
/// Formats: gray 8 and 16 bits without alpha; RGB 8 and 16 bits, four components a pixel, the fourth
/// premultiplied alpha or skipped; CMYK 8 bits without alpha. 16-bit components are little-endian words.
/// Everything else is refused.
///
/// A drawing that fails (a profile that makes no transform, no memory) spoils the surface: from then on it
/// has no `data` and makes no image.
class CGBitmapContext {
 public:
  /// `bytesPerRow` 0 lets the platform choose a padded pitch. Null when the format is refused, a side is 0 or
  /// the memory cannot be had.
  static std::unique_ptr<CGBitmapContext> create(std::size_t width, std::size_t height,
                                                 std::size_t bitsPerComponent, std::size_t bytesPerRow,
                                                 CGColorSpaceRef space, CGBitmapInfo bitmapInfo);

  virtual ~CGBitmapContext() = default;
  virtual std::size_t width() const = 0;
  virtual std::size_t height() const = 0;
  virtual std::size_t bitsPerComponent() const = 0;
  virtual std::size_t bytesPerRow() const = 0;
  virtual CGBitmapInfo bitmapInfo() const = 0;
  virtual const CGColorSpaceRef& colorSpace() const = 0;
  /// The surface's memory, top row first; null when it is spoilt.
  virtual std::uint8_t* data() = 0;

  /// Gray 0 to 1, black to white in any space; alpha 0 to 1.
  virtual void setGrayFillColor(double gray, double alpha) = 0;
  virtual void fillRect(const CGRect& rect) = 0;
  /// Zeroes: transparent, or black without alpha.
  virtual void clearRect(const CGRect& rect) = 0;
  virtual void setInterpolationQuality(CGInterpolationQuality quality) = 0;
  /// Draws the picture, its colours matched to the surface's space, source-over on encoded values. `rect`
  /// must be the whole surface and the picture as large as it: anything else spoils the surface.
  virtual void drawImage(const CGRect& rect, const CGImage& image) = 0;

  /// The image of what was drawn; it takes the memory over, so the surface ends. Null when it is spoilt.
  static CGImageRef createImage(std::unique_ptr<CGBitmapContext> context);

 protected:
  virtual CGImageRef takeImage() = 0;
};

/// Who makes spaces by name, surfaces and images. Replaceable through `Service<GraphicsCreation>`.
class GraphicsCreation {
 public:
  virtual ~GraphicsCreation() = default;
  virtual CGColorSpaceRef colorSpaceWithName(std::string_view name) = 0;
  virtual std::unique_ptr<CGBitmapContext> bitmapContext(std::size_t width, std::size_t height,
                                                         std::size_t bitsPerComponent,
                                                         std::size_t bytesPerRow, CGColorSpaceRef space,
                                                         CGBitmapInfo bitmapInfo) = 0;
  virtual CGImageRef image(const CGImage::Format& format, CGColorSpaceRef space, SharedBytes provider,
                           bool shouldInterpolate, CGColorRenderingIntent intent) = 0;
  static GraphicsCreation& standard();
};

}  // namespace ostra
