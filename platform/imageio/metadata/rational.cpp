#include "platform/imageio/metadata/rational.h"

#include <algorithm>
#include <cmath>

namespace ostra {

std::optional<Rational> rationalFrom(double value, std::int64_t largest) {
  const double size = std::fabs(value);
  if (!std::isfinite(value) || size > static_cast<double>(largest)) return std::nullopt;
  Rational before{0, 1}, now{1, 0};
  double rest = size;
  for (;;) {
    const double whole = std::floor(rest);
    // In doubles first: exact up to 2^53, and beyond that far above `largest` anyway.
    const double numerator =
        whole * static_cast<double>(now.numerator) + static_cast<double>(before.numerator);
    const double denominator =
        whole * static_cast<double>(now.denominator) + static_cast<double>(before.denominator);
    if (std::max(numerator, denominator) > static_cast<double>(largest)) break;
    before = now;
    now = {static_cast<std::int64_t>(numerator), static_cast<std::int64_t>(denominator)};
    const double read = static_cast<double>(now.numerator) / static_cast<double>(now.denominator);
    if (read == size || rest == whole) break;
    rest = 1 / (rest - whole);
  }
  return Rational{value < 0 ? -now.numerator : now.numerator, now.denominator};
}

}  // namespace ostra
