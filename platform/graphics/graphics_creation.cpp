#include "platform/foundation/service.h"
#include "platform/graphics/bitmap_context.h"
#include "platform/graphics/drawing_surface.h"
#include "platform/graphics/named_spaces.h"

namespace ostra {
namespace {

class StandardCreation final : public GraphicsCreation {
 public:
  CGColorSpaceRef colorSpaceWithName(std::string_view name) override { return namedSpace(name); }

  std::unique_ptr<CGBitmapContext> bitmapContext(std::size_t width, std::size_t height,
                                                 std::size_t bitsPerComponent, std::size_t bytesPerRow,
                                                 CGColorSpaceRef space, CGBitmapInfo bitmapInfo) override {
    return DrawingSurface::make({width, height, bitsPerComponent, 0, bytesPerRow, bitmapInfo},
                                std::move(space));
  }

  CGImageRef image(const CGImage::Format& format, CGColorSpaceRef space, SharedBytes provider, bool,
                   CGColorRenderingIntent intent) override {
    if (!wholePixelFormat(format, space.get(), provider.view)) return nullptr;
    return std::make_shared<CGImage>(format, std::move(space), std::move(provider), intent);
  }
};

}  // namespace

GraphicsCreation& GraphicsCreation::standard() {
  static StandardCreation creation;
  return creation;
}

CGColorSpaceRef CGColorSpace::createWithName(std::string_view name) {
  return Service<GraphicsCreation>::current().colorSpaceWithName(name);
}

CGImageRef CGImage::create(const Format& format, CGColorSpaceRef space, SharedBytes provider,
                           bool shouldInterpolate, CGColorRenderingIntent intent) {
  return Service<GraphicsCreation>::current().image(format, std::move(space), std::move(provider),
                                                    shouldInterpolate, intent);
}

std::unique_ptr<CGBitmapContext> CGBitmapContext::create(std::size_t width, std::size_t height,
                                                         std::size_t bitsPerComponent,
                                                         std::size_t bytesPerRow, CGColorSpaceRef space,
                                                         CGBitmapInfo bitmapInfo) {
  return Service<GraphicsCreation>::current().bitmapContext(width, height, bitsPerComponent, bytesPerRow,
                                                            std::move(space), bitmapInfo);
}

CGImageRef CGBitmapContext::createImage(std::unique_ptr<CGBitmapContext> context) {
  return context ? context->takeImage() : nullptr;
}

}  // namespace ostra
