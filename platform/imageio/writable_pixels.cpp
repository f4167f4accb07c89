#include "platform/imageio/writable_pixels.h"

#include "platform/imageio/limits.h"
#include "platform/imageio/profile_space.h"

namespace ostra {
namespace {

std::optional<CGColorSpaceModel> modelOf(const CGImage& image, std::size_t colours) {
  if (const CGColorSpaceRef& space = image.colorSpace()) {
    return space->numberOfComponents() == static_cast<int>(colours) ? std::optional(space->model())
                                                                    : std::nullopt;
  }
  switch (colours) {
    case 1:
      return CGColorSpaceModel::monochrome;
    case 3:
      return CGColorSpaceModel::rgb;
    case 4:
      return CGColorSpaceModel::cmyk;
    default:
      return std::nullopt;
  }
}

bool isWritable(CGColorSpaceModel model) {
  return model == CGColorSpaceModel::monochrome || model == CGColorSpaceModel::rgb ||
         model == CGColorSpaceModel::cmyk;
}

// Whether the rows lie inside the memory, each pixel whole.
bool isConsistent(const CGImage& image) {
  const std::size_t bits = image.bitsPerComponent();
  if ((bits != 8 && bits != 16) || image.bitsPerPixel() % bits != 0 || image.bitsPerPixel() > 5 * bits)
    return false;
  if (image.width() == 0 || image.height() == 0) return false;
  if (image.width() > UINT32_MAX || image.height() > UINT32_MAX) return false;
  const auto row = checkedProduct(image.width(), image.bitsPerPixel() / 8);
  const auto before = checkedProduct(image.bytesPerRow(), image.height() - 1);
  const std::size_t held = image.pixels().view.size();
  return row && before && *row <= image.bytesPerRow() && *row <= held && *before <= held - *row;
}

}  // namespace

std::optional<Pixels> writablePixels(const CGImage& image) {
  const CGImageAlphaInfo alpha = image.alphaInfo();
  if (alpha >= CGImageAlphaInfo::only || !isConsistent(image)) return std::nullopt;
  const std::size_t samples = image.bitsPerPixel() / image.bitsPerComponent();
  const auto model = modelOf(image, alpha == CGImageAlphaInfo::none ? samples : samples - 1);
  if (!model || !isWritable(*model)) return std::nullopt;

  Pixels pixels;
  pixels.layout.width = static_cast<std::uint32_t>(image.width());
  pixels.layout.height = static_cast<std::uint32_t>(image.height());
  pixels.layout.bitsPerComponent = static_cast<std::uint8_t>(image.bitsPerComponent());
  pixels.layout.bitsPerPixel = static_cast<std::uint8_t>(image.bitsPerPixel());
  pixels.layout.bytesPerRow = image.bytesPerRow();
  pixels.layout.model = *model;
  pixels.layout.bitmapInfo =
      static_cast<CGBitmapInfo>(alpha) | (image.bitsPerComponent() == 16 ? kCGBitmapByteOrder16Little : 0);
  pixels.bytes = image.pixels();
  pixels.profile = profileOfSpace(image.colorSpace());
  return pixels;
}

}  // namespace ostra
