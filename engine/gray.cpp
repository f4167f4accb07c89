#include "engine/gray.h"

#include <new>

#include "platform/imageio/limits.h"

namespace ostra {
namespace {

/// Only an RGB space has such a surface.
constexpr SurfaceFormat narrowWithAlpha{.keepAlpha = true, .wide = false};
constexpr SurfaceFormat narrowOpaque{.keepAlpha = false, .wide = false};

/// Gray, alpha, gray, alpha: bytes with shared ownership, or none when they cannot be had.
SharedBytes makeGrayAlphaBytes(std::size_t width, std::size_t height) {
  const auto size = checkedProduct(width, height, 2);
  auto* memory = size ? new (std::nothrow) std::uint8_t[*size]() : nullptr;
  if (memory == nullptr) return {};
  return {std::shared_ptr<std::uint8_t[]>(memory), {memory, static_cast<std::size_t>(*size)}};
}

void interleaveRow(const std::uint8_t* gray, const std::uint8_t* rgba, std::uint8_t* __restrict woven,
                   std::size_t width) {
  for (std::size_t x = 0; x < width; ++x) {
    woven[2 * x] = gray[x];
    woven[2 * x + 1] = rgba[4 * x + 3];
  }
}

SharedBytes interleave(CGBitmapContext& gray, CGBitmapContext& alpha, std::size_t width, std::size_t height) {
  const std::uint8_t* grayRow = gray.data();
  const std::uint8_t* alphaRow = alpha.data();
  if (grayRow == nullptr || alphaRow == nullptr) return {};
  SharedBytes woven = makeGrayAlphaBytes(width, height);
  if (!woven.owner) return {};
  auto* wovenRow = const_cast<std::uint8_t*>(woven.view.data());
  for (std::size_t y = 0; y < height; ++y) {
    interleaveRow(grayRow, alphaRow, wovenRow, width);
    grayRow += gray.bytesPerRow();
    alphaRow += alpha.bytesPerRow();
    wovenRow += 2 * width;
  }
  return woven;
}

SharedBytes drawGrayAlpha(const CGImage& image, const CGColorSpaceRef& graySpace) {
  const CGColorSpaceRef sRGB = requiredColorSpace(kCGColorSpaceSRGB);
  const auto gray = makeSurface(image, graySpace, narrowOpaque);
  if (!gray) return {};
  const auto alpha = makeSurface(image, sRGB, narrowWithAlpha);
  if (!alpha) return {};
  // Not filled first: over black every gray comes out multiplied by its alpha, as the result wants it.
  drawWhole(*gray, image);
  alpha->clearRect({0, 0, static_cast<double>(image.width()), static_cast<double>(image.height())});
  drawWhole(*alpha, image);
  return interleave(*gray, *alpha, image.width(), image.height());
}

CGImageRef convertToTransparentGray(const CGImage& image, const CGColorSpaceRef& graySpace) {
  SharedBytes pixels = drawGrayAlpha(image, graySpace);
  if (!pixels.owner) return nullptr;
  const CGImage::Format format{.width = image.width(),
                               .height = image.height(),
                               .bitsPerComponent = 8,
                               .bitsPerPixel = 16,
                               .bytesPerRow = 2 * image.width(),
                               .bitmapInfo = static_cast<CGBitmapInfo>(CGImageAlphaInfo::premultipliedLast)};
  CGImageRef result =
      CGImage::create(format, graySpace, std::move(pixels), true, CGColorRenderingIntent::standard);
  return result ? result : grayFromLuma(image);
}

/// 10000 times the weights of BT.709; integers, so that white stays white.
void replaceByLuma(std::uint8_t* row, std::size_t width) {
  for (std::size_t x = 0; x < width; ++x) {
    std::uint8_t* pixel = row + 4 * x;
    const unsigned luma = (2126u * pixel[0] + 7152u * pixel[1] + 722u * pixel[2] + 5000u) / 10000u;
    pixel[0] = pixel[1] = pixel[2] = static_cast<std::uint8_t>(luma);
  }
}

}  // namespace

CGImageRef convertToGray(const CGImage& image, const CGColorSpaceRef& graySpace,
                         const SurfaceFormat& format) {
  return format.keepAlpha ? convertToTransparentGray(image, graySpace)
                          : renderOnSurface(image, graySpace, format);
}

CGImageRef grayFromLuma(const CGImage& image) {
  auto surface = makeSurface(image, requiredColorSpace(kCGColorSpaceSRGB), narrowWithAlpha);
  if (!surface) return nullptr;
  drawWhole(*surface, image);
  std::uint8_t* row = surface->data();
  if (row == nullptr) return nullptr;
  for (std::size_t y = 0; y < image.height(); ++y, row += surface->bytesPerRow())
    replaceByLuma(row, image.width());
  return CGBitmapContext::createImage(std::move(surface));
}

}  // namespace ostra
