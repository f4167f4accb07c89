#include "tests/platform/graphics/pictures.h"

#include <gtest/gtest.h>

namespace ostra::test {
namespace {

std::size_t storedComponents(const CGBitmapContext& context) {
  return context.colorSpace()->model() == CGColorSpaceModel::monochrome ? 1 : 4;
}

}  // namespace

CGImageRef makeImage(const Picture& picture) {
  Bytes bytes;
  for (const unsigned value : picture.components) {
    bytes.push_back(static_cast<std::uint8_t>(value));
    if (picture.bits == 16) bytes.push_back(static_cast<std::uint8_t>(value >> 8));
  }
  CGImage::Format format;
  format.width = picture.components.size() / picture.perPixel;
  format.height = 1;
  format.bitsPerComponent = picture.bits;
  format.bitsPerPixel = picture.bits * picture.perPixel;
  format.bytesPerRow = bytes.size();
  format.bitmapInfo =
      static_cast<CGBitmapInfo>(picture.alpha) | (picture.bits == 16 ? kCGBitmapByteOrder16Little : 0);
  return CGImage::create(format, picture.space, SharedBytes::adopt(std::move(bytes)), false, picture.intent);
}

std::unique_ptr<CGBitmapContext> makeSurface(std::size_t width, const CGColorSpaceRef& space,
                                             std::size_t bits, bool withAlpha) {
  CGBitmapInfo info = bits == 16 ? kCGBitmapByteOrder16Little : 0;
  if (space->model() == CGColorSpaceModel::rgb) info |= withAlpha ? 1u : 5u;
  return CGBitmapContext::create(width, 1, bits, 0, space, info);
}

CGRect all(const CGBitmapContext& context) {
  return {0, 0, static_cast<double>(context.width()), static_cast<double>(context.height())};
}

std::vector<unsigned> readRow(CGBitmapContext& context) {
  const std::uint8_t* data = context.data();
  std::vector<unsigned> values;
  if (data == nullptr) return values;
  const std::size_t bytes = context.bitsPerComponent() / 8;
  for (std::size_t i = 0; i < context.width() * storedComponents(context); ++i)
    values.push_back(bytes == 1 ? data[i] : data[2 * i] | static_cast<unsigned>(data[2 * i + 1]) << 8);
  return values;
}

std::vector<unsigned> drawn(const Picture& picture, const CGColorSpaceRef& space, std::size_t bits,
                            bool withAlpha) {
  const auto image = makeImage(picture);
  if (!image) return {};
  const auto surface = makeSurface(image->width(), space, bits, withAlpha);
  surface->drawImage(all(*surface), *image);
  return readRow(*surface);
}

std::vector<unsigned> drawnOverWhite(const Picture& picture, const CGColorSpaceRef& space, std::size_t bits) {
  const auto image = makeImage(picture);
  if (!image) return {};
  const auto surface = makeSurface(image->width(), space, bits, false);
  surface->setGrayFillColor(1, 1);
  surface->fillRect(all(*surface));
  surface->drawImage(all(*surface), *image);
  return readRow(*surface);
}

}  // namespace ostra::test
