#pragma once
#include <array>
#include <optional>

#include "platform/graphics/bitmap_context.h"
#include "platform/graphics/pixel_chunk.h"
#include "platform/graphics/surface_memory.h"

namespace ostra {

/// The surface in ordinary memory.
///
/// Rectangles have their origin at the lower left corner, in pixels; fractions round to the nearest edge.
class DrawingSurface final : public CGBitmapContext {
 public:
  static std::unique_ptr<CGBitmapContext> make(const CGImage::Format& format, CGColorSpaceRef space);
  DrawingSurface(const CGImage::Format& format, const PixelFormat& pixel, CGColorSpaceRef space,
                 SurfaceMemory memory);

  std::size_t width() const override { return format_.width; }
  std::size_t height() const override { return format_.height; }
  std::size_t bitsPerComponent() const override { return format_.bitsPerComponent; }
  std::size_t bytesPerRow() const override { return format_.bytesPerRow; }
  CGBitmapInfo bitmapInfo() const override { return format_.bitmapInfo; }
  const CGColorSpaceRef& colorSpace() const override { return space_; }
  std::uint8_t* data() override;

  void setGrayFillColor(double gray, double alpha) override;
  void fillRect(const CGRect& rect) override;
  void clearRect(const CGRect& rect) override;
  /// Pictures are drawn at their own size only; nothing is ever interpolated.
  void setInterpolationQuality(CGInterpolationQuality) override {}
  void drawImage(const CGRect& rect, const CGImage& image) override;

 protected:
  CGImageRef takeImage() override;

 private:
  struct Area {
    std::size_t left, top, right, bottom;
  };
  using Pixel = std::array<std::uint8_t, 8>;

  Area covered(const CGRect& rect) const;
  bool isAll(const Area& area) const;
  std::uint8_t* row(std::size_t y) { return memory_.get() + y * format_.bytesPerRow; }
  void paintRow(std::size_t y, const Area& area, const Pixel& pixel);
  void paint(const Area& area, const Pixel& pixel);
  void blend(const Area& area, const PixelChunk& color);
  PixelChunk fillChunk() const;
  void draw(const CGImage& image);
  void spoil() { memory_.reset(); }

  CGImage::Format format_;
  PixelFormat pixel_;
  CGColorSpaceRef space_;
  SurfaceMemory memory_;
  double gray_ = 0, alpha_ = 1;
  /// A fill of the whole surface that has not been written yet: a picture without alpha makes it needless.
  std::optional<Pixel> background_;
};

}  // namespace ostra
