#pragma once
#include <cstdint>
#include <optional>

namespace ostra {

struct Rational {
  std::int64_t numerator = 0;
  std::int64_t denominator = 1;
};

/// The first convergent of the continued fraction of `value` that reads back as it, or else the last one
/// whose terms are not above `largest` (at most 2^32). Nothing when `value` is not finite or larger than
/// `largest`.
std::optional<Rational> rationalFrom(double value, std::int64_t largest);

}  // namespace ostra
