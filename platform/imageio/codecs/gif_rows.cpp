#include "platform/imageio/codecs/gif_rows.h"

#include <new>
#include <numeric>

#include "platform/graphics/bitmap_context.h"
#include "platform/imageio/profile_space.h"

namespace ostra {
namespace {

// A palette is always red, green and blue, and its profile one of RGB. So levels of a gray space become those
// of the gray space with sRGB's curve, which neutral colours share with it.
std::vector<std::uint8_t> levelsInSrgb(const ProfileRecord& profile) {
  constexpr std::size_t kLevels = 256;
  std::vector<std::uint8_t> levels(kLevels);
  std::iota(levels.begin(), levels.end(), std::uint8_t{0});
  const CGColorSpaceRef stated = statedSpace(profile, CGColorSpaceModel::monochrome);
  const CGColorSpaceRef wanted = CGColorSpace::createWithName(kCGColorSpaceGenericGrayGamma2_2);
  if (stated == nullptr || stated == wanted) return levels;
  CGImage::Format format;
  format.width = kLevels;
  format.height = 1;
  format.bitsPerComponent = format.bitsPerPixel = 8;
  format.bytesPerRow = kLevels;
  const CGImageRef image = CGImage::create(format, stated, SharedBytes::adopt(Bytes(levels)), false,
                                           CGColorRenderingIntent::standard);
  const auto context = CGBitmapContext::create(kLevels, 1, 8, 0, wanted, 0);
  if (image == nullptr || context == nullptr) throw std::bad_alloc();
  context->drawImage({0, 0, kLevels, 1}, *image);
  if (context->data() == nullptr) throw std::bad_alloc();
  return {context->data(), context->data() + kLevels};
}

template <unsigned kBits>
std::uint8_t sample8(const std::uint8_t* pixel, std::size_t index) {
  if constexpr (kBits == 8) return pixel[index];
  const std::uint32_t word = pixel[2 * index] | std::uint32_t{pixel[2 * index + 1]} << 8;
  return static_cast<std::uint8_t>((word * 255 + 32767) / 65535);
}

template <unsigned kBits>
void readRow(const Layout& layout, bool alpha, const std::uint8_t* from,
             const std::vector<std::uint8_t>& grays, std::vector<GifPixel>& row) {
  const std::size_t size = layout.bitsPerPixel / 8u, samples = layout.bitsPerPixel / kBits;
  const bool gray = layout.model == CGColorSpaceModel::monochrome;
  for (GifPixel& pixel : row) {
    constexpr std::uint8_t kHalf = 128;
    pixel.visible = !alpha || sample8<kBits>(from, samples - 1) >= kHalf;
    for (std::size_t c = 0; c < 3; ++c) {
      const std::uint8_t value = gray ? grays[sample8<kBits>(from, 0)] : sample8<kBits>(from, c);
      pixel.colour[c] = pixel.visible ? value : std::uint8_t{0};
    }
    from += size;
  }
}

}  // namespace

GifRows::GifRows(const Pixels& pixels) : pixels_(pixels), straight_(pixels), row_(pixels.layout.width) {
  if (pixels.layout.model == CGColorSpaceModel::monochrome) grays_ = levelsInSrgb(pixels.profile);
}

const std::vector<GifPixel>& GifRows::row(std::uint32_t y) {
  const Layout& layout = pixels_.layout;
  const bool alpha = straight_.alpha() == CGImageAlphaInfo::last;
  const std::uint8_t* from = straight_.row(y);
  if (layout.bitsPerComponent == 8) {
    readRow<8>(layout, alpha, from, grays_, row_);
  } else {
    readRow<16>(layout, alpha, from, grays_, row_);
  }
  return row_;
}

}  // namespace ostra
