#include "platform/graphics/pixel_format.h"

#include <algorithm>
#include <iterator>

namespace ostra {
namespace {

bool orderIsOurs(std::size_t bits, CGBitmapInfo info) {
  const CGBitmapInfo rest = info & ~kCGBitmapAlphaInfoMask;
  return rest == 0 || (bits == 16 && rest == kCGBitmapByteOrder16Little);
}

AlphaKind kindOf(CGImageAlphaInfo alpha) {
  switch (alpha) {
    case CGImageAlphaInfo::premultipliedLast:
    case CGImageAlphaInfo::premultipliedFirst:
      return AlphaKind::premultiplied;
    case CGImageAlphaInfo::last:
    case CGImageAlphaInfo::first:
    case CGImageAlphaInfo::only:
      return AlphaKind::straight;
    case CGImageAlphaInfo::none:
    case CGImageAlphaInfo::noneSkipLast:
    case CGImageAlphaInfo::noneSkipFirst:
      break;
  }
  return AlphaKind::none;
}

bool isFirst(CGImageAlphaInfo alpha) {
  return alpha == CGImageAlphaInfo::premultipliedFirst || alpha == CGImageAlphaInfo::first ||
         alpha == CGImageAlphaInfo::noneSkipFirst;
}

bool colorsAllow(std::size_t colors, CGImageAlphaInfo alpha) {
  if (alpha == CGImageAlphaInfo::none) return colors == 1 || colors == 3 || colors == 4;
  if (colors == 1) return alpha == CGImageAlphaInfo::last || alpha == CGImageAlphaInfo::premultipliedLast;
  return colors == 3;
}

PixelFormat arrange(std::size_t bytes, std::size_t colors, CGImageAlphaInfo alpha) {
  PixelFormat format;
  format.bytesPerComponent = bytes;
  format.colors = colors;
  format.alpha = kindOf(alpha);
  format.componentsPerPixel = colors + (alpha != CGImageAlphaInfo::none ? 1 : 0);
  format.firstColor = isFirst(alpha) ? 1 : 0;
  format.alphaIndex = isFirst(alpha) ? 0 : colors;
  return format;
}

/// All rows but the last at their full pitch.
bool providerSuffices(const CGImage::Format& format, std::size_t bytesPerPixel, ByteView provider) {
  std::size_t row = 0, before = 0, all = 0;
  return format.width > 0 && format.height > 0 && provider.data() != nullptr &&
         !__builtin_mul_overflow(format.width, bytesPerPixel, &row) && format.bytesPerRow >= row &&
         !__builtin_mul_overflow(format.height - 1, format.bytesPerRow, &before) &&
         !__builtin_add_overflow(before, row, &all) && provider.size() >= all;
}

struct SurfaceRow {
  CGColorSpaceModel model;
  std::size_t bits;
  CGBitmapInfo info;
};

constexpr SurfaceRow surfaces[] = {
    {CGColorSpaceModel::monochrome, 8, 0}, {CGColorSpaceModel::monochrome, 16, 0x1000},
    {CGColorSpaceModel::rgb, 8, 1},        {CGColorSpaceModel::rgb, 8, 5},
    {CGColorSpaceModel::rgb, 16, 0x1001},  {CGColorSpaceModel::rgb, 16, 0x1005},
    {CGColorSpaceModel::cmyk, 8, 0},
};

std::size_t colorsOf(CGColorSpaceModel model) {
  if (model == CGColorSpaceModel::monochrome) return 1;
  return model == CGColorSpaceModel::cmyk ? 4 : 3;
}

}  // namespace

std::optional<PixelFormat> imagePixelFormat(const CGImage::Format& format, std::optional<int> colors) {
  const std::size_t bits = format.bitsPerComponent;
  const auto alpha = static_cast<CGImageAlphaInfo>(format.bitmapInfo & kCGBitmapAlphaInfoMask);
  if ((bits != 8 && bits != 16) || !orderIsOurs(bits, format.bitmapInfo) || alpha > CGImageAlphaInfo::only)
    return std::nullopt;
  if (format.bitsPerPixel == 0 || format.bitsPerPixel % bits != 0) return std::nullopt;
  const std::size_t stored = format.bitsPerPixel / bits;
  if (alpha == CGImageAlphaInfo::only) {
    if (bits != 8 || stored != 1 || colors) return std::nullopt;
    return arrange(1, 0, alpha);
  }
  const std::size_t found = stored - (alpha == CGImageAlphaInfo::none ? 0 : 1);
  if (!colorsAllow(found, alpha) || (colors && static_cast<std::size_t>(*colors) != found))
    return std::nullopt;
  return arrange(bits / 8, found, alpha);
}

std::optional<PixelFormat> wholePixelFormat(const CGImage::Format& format, const CGColorSpace* space,
                                            ByteView provider) {
  const auto colors = space != nullptr ? std::optional(space->numberOfComponents()) : std::nullopt;
  const auto found = imagePixelFormat(format, colors);
  return found && providerSuffices(format, found->bytesPerPixel(), provider) ? found : std::nullopt;
}

std::optional<PixelFormat> surfacePixelFormat(CGColorSpaceModel model, std::size_t bitsPerComponent,
                                              CGBitmapInfo bitmapInfo) {
  const bool known = std::any_of(std::begin(surfaces), std::end(surfaces), [&](const SurfaceRow& row) {
    return row.model == model && row.bits == bitsPerComponent && row.info == bitmapInfo;
  });
  if (!known) return std::nullopt;
  return arrange(bitsPerComponent / 8, colorsOf(model),
                 static_cast<CGImageAlphaInfo>(bitmapInfo & kCGBitmapAlphaInfoMask));
}

}  // namespace ostra
