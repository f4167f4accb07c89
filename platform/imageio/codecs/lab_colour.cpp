#include "platform/imageio/codecs/lab_colour.h"

#include <cmath>

#include "platform/imageio/codecs/romm_curve.h"

namespace ostra {
namespace {

// CIE 1976, the inverse of its function of relative light.
double relativeLight(double value) {
  constexpr double kKnee = 6.0 / 29;
  return value > kKnee ? value * value * value : 3 * kKnee * kKnee * (value - 4.0 / 29);
}

}  // namespace

std::array<std::uint16_t, 3> rommOfLab(double lightness, double a, double b) {
  const double middle = (lightness + 16) / 116;
  const double x = 0.9642 * relativeLight(middle + a / 500), y = relativeLight(middle),
               z = 0.8249 * relativeLight(middle - b / 200);
  const std::array<double, 3> light = {1.34594 * x - 0.25561 * y - 0.05111 * z,
                                       -0.54460 * x + 1.50817 * y + 0.02054 * z, 1.21181 * z};
  std::array<std::uint16_t, 3> colour{};
  for (std::size_t c = 0; c < 3; ++c)
    colour[c] = static_cast<std::uint16_t>(std::lround(rommValueOfLight(light[c]) * 65535));
  return colour;
}

}  // namespace ostra
