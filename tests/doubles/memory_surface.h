#pragma once
#include <functional>

#include "platform/graphics/bitmap_context.h"
#include "tests/doubles/call_log.h"

namespace ostra::test {

/// What a drawing puts into a surface: the test's own pixels instead of a colour conversion.
using Paint = std::function<void(CGBitmapContext& surface, const CGImage& image)>;

/// A surface whose rows are padded and which only notes what is done with it. A paint that is empty draws
/// nothing.
class MemorySurface : public CGBitmapContext {
 public:
  MemorySurface(CallLog& log, const CGImage::Format& format, CGColorSpaceRef space, Paint paint)
      : log_(log), format_(format), space_(std::move(space)), paint_(std::move(paint)) {
    format_.bytesPerRow = format.width * format.bitsPerPixel / 8 + padding;
    memory_ = std::make_shared<Bytes>(format_.bytesPerRow * format.height);
  }

  std::size_t width() const override { return format_.width; }
  std::size_t height() const override { return format_.height; }
  std::size_t bitsPerComponent() const override { return format_.bitsPerComponent; }
  std::size_t bytesPerRow() const override { return format_.bytesPerRow; }
  CGBitmapInfo bitmapInfo() const override { return format_.bitmapInfo; }
  const CGColorSpaceRef& colorSpace() const override { return space_; }
  std::uint8_t* data() override { return spoilt_ ? nullptr : memory_->data(); }

  void setGrayFillColor(double gray, double alpha) override {
    log_.add("fill colour " + std::to_string(gray) + " " + std::to_string(alpha));
  }
  void fillRect(const CGRect& rect) override { log_.add("fill" + text(rect)); }
  void clearRect(const CGRect& rect) override { log_.add("clear" + text(rect)); }
  void setInterpolationQuality(CGInterpolationQuality quality) override {
    log_.add("interpolation " + std::to_string(static_cast<int>(quality)));
  }
  void drawImage(const CGRect& rect, const CGImage& image) override {
    log_.add("draw" + text(rect));
    if (paint_) paint_(*this, image);
  }

  /// From now on as after a drawing that failed.
  void spoil() { spoilt_ = true; }

  static constexpr std::size_t padding = 24;

 protected:
  CGImageRef takeImage() override {
    log_.add("make image of surface");
    if (spoilt_) return nullptr;
    return std::make_shared<const CGImage>(format_, space_, SharedBytes{memory_, *memory_},
                                           CGColorRenderingIntent::standard);
  }

 private:
  static std::string text(const CGRect& rect) {
    std::string numbers;
    for (const double side : {rect.x, rect.y, rect.width, rect.height}) {
      numbers += " " + std::to_string(static_cast<int>(side));
    }
    return numbers;
  }

  CallLog& log_;
  CGImage::Format format_;
  CGColorSpaceRef space_;
  Paint paint_;
  std::shared_ptr<Bytes> memory_;
  bool spoilt_ = false;
};

}  // namespace ostra::test
