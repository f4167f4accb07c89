#include "platform/imageio/modules/heif/heif_planes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

namespace ostra {
namespace {

constexpr float kRed = 0.299F, kBlue = 0.114F, kGreen = 1 - kRed - kBlue;

struct Colour {
  float red = 0, green = 0, blue = 0;
};

/// Samples of a row as parts of 1, and back to the bits of a plane.
class Samples {
 public:
  Samples(const Layout& layout, unsigned bits)
      : wide_(layout.bitsPerComponent == 16),
        pixel_(layout.bitsPerPixel / layout.bitsPerComponent),
        most_(static_cast<float>((1U << bits) - 1)) {}

  float at(const std::uint8_t* row, std::size_t x, std::size_t component) const {
    const std::size_t i = x * pixel_ + component;
    return wide_ ? static_cast<float>(row[2 * i] | row[2 * i + 1] << 8) / 65535 : row[i] / 255.0F;
  }
  void put(const HeifPlane& plane, std::size_t x, std::size_t y, float value) const {
    const auto stored = static_cast<unsigned>(std::floor(std::clamp(value * most_ + 0.5F, 0.0F, most_)));
    std::uint8_t* row = plane.data + y * plane.stride;
    if (plane.bits <= 8) {
      row[x] = static_cast<std::uint8_t>(stored);
    } else {
      row[2 * x] = static_cast<std::uint8_t>(stored);
      row[2 * x + 1] = static_cast<std::uint8_t>(stored >> 8);
    }
  }
  /// Chroma, 0 in the middle: where half of an odd largest value is no number, above it.
  void putChroma(const HeifPlane& plane, std::size_t x, std::size_t y, float value) const {
    put(plane, x, y, value + (most_ + 1) / (2 * most_));
  }

 private:
  bool wide_;
  std::size_t pixel_;
  float most_;
};

struct Planes {
  HeifPlane luma, blue, red, alpha;
};

// Colour of a row is added to the pixels' sums of two by two.
void fillRow(const Samples& samples, const std::uint8_t* row, std::uint32_t y, const Layout& layout,
             const Planes& planes, std::vector<Colour>& sums) {
  for (std::uint32_t x = 0; x < layout.width; ++x) {
    const Colour colour{samples.at(row, x, 0), samples.at(row, x, 1), samples.at(row, x, 2)};
    samples.put(planes.luma, x, y, kRed * colour.red + kGreen * colour.green + kBlue * colour.blue);
    Colour& sum = sums[x / 2];
    sum.red += colour.red, sum.green += colour.green, sum.blue += colour.blue;
    if (planes.alpha.data != nullptr) samples.put(planes.alpha, x, y, samples.at(row, x, 3));
  }
}

// At the right and lower edge of an odd size fewer pixels share a chroma sample.
void fillChromaRow(const Samples& samples, std::uint32_t y, const Layout& layout, const Planes& planes,
                   std::vector<Colour>& sums) {
  const std::uint32_t down = std::min(2U, layout.height - y / 2 * 2);
  for (std::uint32_t x = 0; x < sums.size(); ++x) {
    const auto count = static_cast<float>(down * std::min(2U, layout.width - 2 * x));
    const Colour mean{sums[x].red / count, sums[x].green / count, sums[x].blue / count};
    const float luma = kRed * mean.red + kGreen * mean.green + kBlue * mean.blue;
    samples.putChroma(planes.blue, x, y / 2, (mean.blue - luma) / (2 * (1 - kBlue)));
    samples.putChroma(planes.red, x, y / 2, (mean.red - luma) / (2 * (1 - kRed)));
    sums[x] = {};
  }
}

void fillColour(const Samples& samples, const Layout& layout, StraightRows& rows, const Planes& planes) {
  std::vector<Colour> sums((layout.width + 1) / 2);
  for (std::uint32_t y = 0; y < layout.height; ++y) {
    fillRow(samples, rows.row(y), y, layout, planes, sums);
    if (y % 2 == 1 || y + 1 == layout.height) fillChromaRow(samples, y, layout, planes, sums);
  }
}

void fillGray(const Samples& samples, const Layout& layout, StraightRows& rows, const Planes& planes) {
  for (std::uint32_t y = 0; y < layout.height; ++y) {
    const std::uint8_t* row = rows.row(y);
    for (std::uint32_t x = 0; x < layout.width; ++x) {
      samples.put(planes.luma, x, y, samples.at(row, x, 0));
      if (planes.alpha.data != nullptr) samples.put(planes.alpha, x, y, samples.at(row, x, 1));
    }
  }
}

HeifImage emptyImage(const Layout& layout, bool gray) {
  heif_image* made = nullptr;
  const heif_error error = heif_image_create(static_cast<int>(layout.width), static_cast<int>(layout.height),
                                             gray ? heif_colorspace_monochrome : heif_colorspace_YCbCr,
                                             gray ? heif_chroma_monochrome : heif_chroma_420, &made);
  return HeifImage(succeeded(error) ? made : nullptr);
}

}  // namespace

HeifImage heifPlanes(const Layout& layout, StraightRows& rows) {
  const bool gray = layout.model == CGColorSpaceModel::monochrome;
  const bool alpha = rows.alpha() == CGImageAlphaInfo::last;
  const unsigned bits = layout.bitsPerComponent == 16 ? 10 : 8;
  HeifImage image = emptyImage(layout, gray);
  if (image == nullptr) return nullptr;
  const auto plane = [&](heif_channel channel, std::uint32_t divisor) {
    return addPlane(image.get(), channel, (layout.width + divisor - 1) / divisor,
                    (layout.height + divisor - 1) / divisor, bits);
  };
  Planes planes;
  planes.luma = plane(heif_channel_Y, 1);
  if (!gray) planes.blue = plane(heif_channel_Cb, 2), planes.red = plane(heif_channel_Cr, 2);
  if (alpha) planes.alpha = plane(heif_channel_Alpha, 1);
  const bool lacks = planes.luma.data == nullptr || (alpha && planes.alpha.data == nullptr) ||
                     (!gray && (planes.blue.data == nullptr || planes.red.data == nullptr));
  if (lacks) return nullptr;
  const Samples samples(layout, bits);
  if (gray) {
    fillGray(samples, layout, rows, planes);
  } else {
    fillColour(samples, layout, rows, planes);
  }
  return image;
}

}  // namespace ostra
