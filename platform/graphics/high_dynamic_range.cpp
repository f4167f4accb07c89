#include "platform/graphics/high_dynamic_range.h"

#include <algorithm>
#include <cmath>

namespace ostra {
namespace {

// In cd/m².
constexpr double mostLight = 10000, peak = 1000, white = 203;

// ITU-R BT.2100, table 4.
constexpr double m1 = 2610 / 16384.0, m2 = 128 * 2523 / 4096.0;
constexpr double c1 = 3424 / 4096.0, c2 = 32 * 2413 / 4096.0, c3 = 32 * 2392 / 4096.0;

double lightOfQuantized(double value) {
  const double power = std::pow(value, 1 / m2);
  return mostLight * std::pow(std::max(power - c1, 0.0) / (c2 - c3 * power), 1 / m1);
}

double quantized(double light) {
  const double power = std::pow(light / mostLight, m1);
  return std::pow((c1 + c2 * power) / (1 + c3 * power), m2);
}

// ITU-R BT.2100, table 5: the inverse of the camera's curve, then the system gamma.
double lightOfHybridLog(double value) {
  constexpr double a = 0.17883277, b = 1 - 4 * a, systemGamma = 1.2;
  const double c = 0.5 - a * std::log(4 * a);
  const double scene = value <= 0.5 ? value * value / 3 : (std::exp((value - c) / a) + b) / 12;
  return peak * std::pow(scene, systemGamma);
}

/// From `knee` to 1, a cubic that starts as steep as the line before it and ends flat at `most`.
double bent(double value, double knee, double most) {
  if (value < knee) return value;
  const double t = (value - knee) / (1 - knee), t2 = t * t, t3 = t2 * t;
  return (2 * t3 - 3 * t2 + 1) * knee + (t3 - 2 * t2 + t) * (1 - knee) + (3 * t2 - 2 * t3) * most;
}

/// Light as a fraction of white.
double shown(double light) {
  if (light >= peak) return 1;
  const double range = quantized(peak), most = quantized(white) / range;
  return lightOfQuantized(range * bent(quantized(light) / range, 1.5 * most - 0.5, most)) / white;
}

std::vector<std::uint16_t> tableOf(double (*lightOf)(double)) {
  std::vector<std::uint16_t> table(1024);
  for (std::size_t i = 0; i < table.size(); ++i) {
    const double light = shown(lightOf(static_cast<double>(i) / 1023));
    table[i] = static_cast<std::uint16_t>(std::lround(65535 * std::clamp(light, 0.0, 1.0)));
  }
  return table;
}

}  // namespace

std::vector<std::uint16_t> perceptualQuantizerCurve() { return tableOf(lightOfQuantized); }
std::vector<std::uint16_t> hybridLogGammaCurve() { return tableOf(lightOfHybridLog); }

}  // namespace ostra
