#include "platform/imageio/codecs/hdr_light.h"

#include <cmath>

namespace ostra {
namespace {

double lightOf(std::uint8_t mantissa, std::uint8_t exponent) {
  return exponent == 0 ? 0 : std::ldexp(mantissa, exponent - 136);
}

}  // namespace

HdrLight::HdrLight(const HdrHeader& header)
    : space_(header.isXyz ? std::nullopt : header.primaries), isXyz_(header.isXyz) {
  if (isXyz_) return;
  values_.resize(std::size_t{256} * 256);
  for (unsigned exponent = 0; exponent < 256; ++exponent) {
    for (unsigned mantissa = 0; mantissa < 256; ++mantissa)
      values_[256 * exponent + mantissa] =
          space_.valueOf(lightOf(static_cast<std::uint8_t>(mantissa), static_cast<std::uint8_t>(exponent)));
  }
}

std::array<std::uint16_t, 3> HdrLight::valuesOf(const HdrPixel& pixel) const {
  if (!isXyz_) {
    const std::uint16_t* values = &values_[std::size_t{256} * pixel[3]];
    return {values[pixel[0]], values[pixel[1]], values[pixel[2]]};
  }
  const double x = lightOf(pixel[0], pixel[3]), y = lightOf(pixel[1], pixel[3]),
               z = lightOf(pixel[2], pixel[3]);
  // IEC 61966-2-1, with more digits.
  return {space_.valueOf(3.2404542 * x - 1.5371385 * y - 0.4985314 * z),
          space_.valueOf(-0.9692660 * x + 1.8760108 * y + 0.0415560 * z),
          space_.valueOf(0.0556434 * x - 0.2040259 * y + 1.0572252 * z)};
}

}  // namespace ostra
