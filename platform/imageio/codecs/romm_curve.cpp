#include "platform/imageio/codecs/romm_curve.h"

#include <algorithm>
#include <cmath>

namespace ostra {

// A power; the darkest values, up to 1/512, stand for a sixteenth of themselves, as the profile of that name
// says.
double rommValueOfLight(double light) {
  if (!(light > 0)) return 0;
  const double value = std::pow(light, 1 / 1.8);
  return value < 1.0 / 512 ? 16 * light : std::min(value, 1.0);
}

}  // namespace ostra
