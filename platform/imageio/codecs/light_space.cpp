#include "platform/imageio/codecs/light_space.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "platform/imageio/codecs/srgb_curve.h"
#include "platform/imageio/profile_space.h"

namespace ostra {
namespace {

constexpr double kPower = 2.2;

bool areSrgb(const std::array<double, 8>& primaries) {
  constexpr std::array<double, 8> kSrgb = {0.64, 0.33, 0.30, 0.60, 0.15, 0.06, 0.3127, 0.3290};
  constexpr double kRounding = 0.001;
  return std::equal(kSrgb.begin(), kSrgb.end(), primaries.begin(),
                    [](double a, double b) { return std::abs(a - b) <= kRounding; });
}

ProfileRecord profileOf(const std::optional<std::array<double, 8>>& primaries) {
  if (primaries && !areSrgb(*primaries)) {
    const auto& numbers = *primaries;
    Calibrated space{{numbers[6], numbers[7]}, std::array<double, 6>{}, kPower};
    std::copy_n(numbers.begin(), 6, space.primaries->begin());
    if (statedSpace(space, CGColorSpaceModel::rgb) != nullptr) return space;
  }
  return NamedSpace{std::string(kCGColorSpaceSRGB)};
}

}  // namespace

LightSpace::LightSpace(const std::optional<std::array<double, 8>>& primaries)
    : profile_(profileOf(primaries)) {}

std::uint16_t LightSpace::valueOf(double light) const {
  if (!(light > 0)) return 0;
  const bool isSrgb = std::holds_alternative<NamedSpace>(profile_);
  const double value = isSrgb ? srgbValueOfLight(light) : std::pow(std::min(light, 1.0), 1 / kPower);
  return static_cast<std::uint16_t>(std::lround(value * 65535));
}

}  // namespace ostra
