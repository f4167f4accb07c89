#pragma once
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "platform/imageio/codecs/picture_tree.h"

namespace ostra {

inline constexpr double kMetresAnInch = 0.0254;

/// A density that a file tells in whole dots a metre, in dots an inch.
inline double inchesFromMetres(double dotsAMetre) {
  return roundedDensity(dotsAMetre * kMetresAnInch, kMetresAnInch);
}
inline std::uint32_t metresFromInches(double dotsAnInch) {
  return static_cast<std::uint32_t>(std::clamp(std::round(dotsAnInch / kMetresAnInch), 1.0, 2147483647.0));
}

}  // namespace ostra
