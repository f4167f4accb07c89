#pragma once
#include <optional>
#include <vector>

#include "platform/foundation/bytes.h"

namespace ostra {

/// A tone curve of an ICC profile, evaluated in double precision: stored value (0 to 1) to light (0 to 1) and
/// back. Only curves that rise are represented; a profile with any other is left to the colour library.
///
/// A formula is light = (a·value + b)^g from the value d upwards, c·value below it: the forms of ICC.1
/// (parametricCurveType) are this one with some parameters fixed, or have offsets, which nobody's display
/// profile has and the colour library gets. A table holds light at equal steps of the value.
struct ToneCurve {
  double g = 1, a = 1, b = 0, c = 0, d = 0;
  std::vector<double> table;

  /// From a tag of type curv or para. Nothing when it is malformed or does not rise from about 0 to at
  /// most 1.
  static std::optional<ToneCurve> ofTag(ByteView tag);

  double decode(double value) const;
  /// The inverse, clamped to 0 to 1.
  double encode(double light) const;

  /// Light below which the inverse is the straight line light / c; 0 when it has no such toe.
  double toeEnd() const;
  /// The curve as it is above the toe; for values under it the upper part goes on.
  double decodeAboveToe(double value) const;
  /// The inverse as it is above the toe, not clamped. For light under the toe it continues the upper part.
  double encodeAboveToe(double light) const;

  friend bool operator==(const ToneCurve&, const ToneCurve&) = default;
};

}  // namespace ostra
