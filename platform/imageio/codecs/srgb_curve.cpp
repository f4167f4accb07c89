#include "platform/imageio/codecs/srgb_curve.h"

#include <cmath>

namespace ostra {

double srgbValueOfLight(double light) {
  if (!(light > 0)) return 0;
  if (light >= 1) return 1;
  return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

}  // namespace ostra
