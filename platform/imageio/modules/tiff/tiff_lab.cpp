#include "platform/imageio/modules/tiff/tiff_lab.h"

#include <algorithm>
#include <cmath>

namespace ostra {
namespace {

double lightOf(double f) {
  constexpr double threshold = 6.0 / 29;
  return f > threshold ? f * f * f : 3 * threshold * threshold * (f - 4.0 / 29);
}

// ISO 22028-2:2013: linear below 1/512, a power of 1/1.8 above.
std::uint16_t encodedROMM(double light) {
  const double clipped = std::clamp(light, 0.0, 1.0);
  const double value = clipped < 1.0 / 512 ? 16 * clipped : std::pow(clipped, 1 / 1.8);
  return static_cast<std::uint16_t>(std::lround(value * 65535));
}

double lightness(std::uint16_t stored, LabEncoding encoding) {
  return stored * 100.0 / (encoding.ofProfiles && !encoding.wholeBytes ? 65280 : 65535);
}

double opponent(std::uint16_t stored, LabEncoding encoding) {
  const int shifted = encoding.ofProfiles ? stored : stored ^ 0x8000;
  return encoding.wholeBytes ? (shifted >> 8) - 128 : shifted / 256.0 - 128;
}

}  // namespace

void labToROMM(const std::uint16_t* lab, LabEncoding encoding, std::array<std::uint16_t, 4>& pixel) {
  const double fy = (lightness(lab[0], encoding) + 16) / 116;
  const double a = opponent(lab[1], encoding), b = opponent(lab[2], encoding);
  const double x = 0.9642 * lightOf(fy + a / 500), y = lightOf(fy), z = 0.8249 * lightOf(fy - b / 200);
  pixel[0] = encodedROMM(1.3460 * x - 0.2556 * y - 0.0511 * z);
  pixel[1] = encodedROMM(-0.5446 * x + 1.5082 * y + 0.0205 * z);
  pixel[2] = encodedROMM(1.2123 * z);
}

}  // namespace ostra
