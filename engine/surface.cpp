#include "engine/surface.h"

#include <exception>
#include <optional>

namespace ostra {
namespace {

constexpr auto alphaNone = static_cast<CGBitmapInfo>(CGImageAlphaInfo::none);
constexpr auto alphaSkipped = static_cast<CGBitmapInfo>(CGImageAlphaInfo::noneSkipLast);
constexpr auto alphaPremultiplied = static_cast<CGBitmapInfo>(CGImageAlphaInfo::premultipliedLast);

std::optional<CGBitmapInfo> bitmapInfo16(CGColorSpaceModel model, bool keepAlpha) {
  if (model == CGColorSpaceModel::rgb) {
    return kCGBitmapByteOrder16Little | (keepAlpha ? alphaPremultiplied : alphaSkipped);
  }
  if (model == CGColorSpaceModel::monochrome && !keepAlpha) return kCGBitmapByteOrder16Little | alphaNone;
  return std::nullopt;
}

std::optional<CGBitmapInfo> bitmapInfo8(CGColorSpaceModel model, bool keepAlpha) {
  if (model == CGColorSpaceModel::rgb) return keepAlpha ? alphaPremultiplied : alphaSkipped;
  const bool hasFormat = model == CGColorSpaceModel::monochrome || model == CGColorSpaceModel::cmyk;
  if (hasFormat && !keepAlpha) return alphaNone;
  return std::nullopt;
}

CGRect bounds(const CGBitmapContext& surface) {
  return {0, 0, static_cast<double>(surface.width()), static_cast<double>(surface.height())};
}

}  // namespace

CGColorSpaceRef requiredColorSpace(std::string_view name) {
  CGColorSpaceRef space = CGColorSpace::createWithName(name);
  if (!space) std::terminate();
  return space;
}

std::unique_ptr<CGBitmapContext> makeSurface(const CGImage& image, const CGColorSpaceRef& space,
                                             const SurfaceFormat& format) {
  const CGColorSpaceModel model = space->model();
  const auto create = [&](std::size_t bits, CGBitmapInfo info) {
    return CGBitmapContext::create(image.width(), image.height(), bits, 0, space, info);
  };
  if (const auto info = bitmapInfo16(model, format.keepAlpha); info && format.wide) {
    if (auto surface = create(16, *info)) return surface;
  }
  const auto info = bitmapInfo8(model, format.keepAlpha);
  return info ? create(8, *info) : nullptr;
}

void fillWhite(CGBitmapContext& surface) {
  surface.setGrayFillColor(1, 1);
  surface.fillRect(bounds(surface));
}

void drawWhole(CGBitmapContext& surface, const CGImage& image) {
  surface.setInterpolationQuality(CGInterpolationQuality::none);
  surface.drawImage(bounds(surface), image);
}

CGImageRef renderOnSurface(const CGImage& image, const CGColorSpaceRef& space, const SurfaceFormat& format) {
  auto surface = makeSurface(image, space, format);
  if (!surface) return nullptr;
  if (!format.keepAlpha) fillWhite(*surface);
  drawWhole(*surface, image);
  return CGBitmapContext::createImage(std::move(surface));
}

}  // namespace ostra
