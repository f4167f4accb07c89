#include "platform/imageio/codecs/hdr_light.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "platform/imageio/codecs/srgb_curve.h"
#include "platform/imageio/profile_space.h"

namespace ostra {
namespace {

constexpr double kPower = 2.2;

double lightOf(std::uint8_t mantissa, std::uint8_t exponent) {
  return exponent == 0 ? 0 : std::ldexp(mantissa, exponent - 136);
}

bool areSrgb(const std::array<double, 8>& primaries) {
  constexpr std::array<double, 8> kSrgb = {0.64, 0.33, 0.30, 0.60, 0.15, 0.06, 0.3127, 0.3290};
  constexpr double kRounding = 0.001;
  return std::equal(kSrgb.begin(), kSrgb.end(), primaries.begin(),
                    [](double a, double b) { return std::abs(a - b) <= kRounding; });
}

// Primaries that make no space are as good as none, and none are sRGB's.
ProfileRecord profileOf(const HdrHeader& header) {
  if (header.primaries && !header.isXyz && !areSrgb(*header.primaries)) {
    const auto& numbers = *header.primaries;
    Calibrated space{{numbers[6], numbers[7]}, std::array<double, 6>{}, kPower};
    std::copy_n(numbers.begin(), 6, space.primaries->begin());
    if (statedSpace(space, CGColorSpaceModel::rgb) != nullptr) return space;
  }
  return NamedSpace{std::string(kCGColorSpaceSRGB)};
}

}  // namespace

HdrLight::HdrLight(const HdrHeader& header) : profile_(profileOf(header)), isXyz_(header.isXyz) {
  if (isXyz_) return;
  values_.resize(std::size_t{256} * 256);
  for (unsigned exponent = 0; exponent < 256; ++exponent) {
    for (unsigned mantissa = 0; mantissa < 256; ++mantissa)
      values_[256 * exponent + mantissa] =
          valueOf(lightOf(static_cast<std::uint8_t>(mantissa), static_cast<std::uint8_t>(exponent)));
  }
}

std::uint16_t HdrLight::valueOf(double light) const {
  const bool isSrgb = std::holds_alternative<NamedSpace>(profile_);
  const double value = isSrgb ? srgbValueOfLight(light) : std::pow(std::clamp(light, 0.0, 1.0), 1 / kPower);
  return static_cast<std::uint16_t>(std::lround(value * 65535));
}

std::array<std::uint16_t, 3> HdrLight::valuesOf(const HdrPixel& pixel) const {
  if (!isXyz_) {
    const std::uint16_t* values = &values_[std::size_t{256} * pixel[3]];
    return {values[pixel[0]], values[pixel[1]], values[pixel[2]]};
  }
  const double x = lightOf(pixel[0], pixel[3]), y = lightOf(pixel[1], pixel[3]),
               z = lightOf(pixel[2], pixel[3]);
  // IEC 61966-2-1, with more digits.
  return {valueOf(3.2404542 * x - 1.5371385 * y - 0.4985314 * z),
          valueOf(-0.9692660 * x + 1.8760108 * y + 0.0415560 * z),
          valueOf(0.0556434 * x - 0.2040259 * y + 1.0572252 * z)};
}

}  // namespace ostra
