#pragma once
#include <array>
#include <optional>

#include "platform/graphics/icc_check.h"
#include "platform/graphics/tone_curve.h"

namespace ostra {

/// Three rows of three.
using Matrix3 = std::array<std::array<double, 3>, 3>;

Matrix3 product(const Matrix3& left, const Matrix3& right);
std::optional<Matrix3> inverse(const Matrix3& matrix);

/// The white of the profile connection space, ICC.1 7.2.16.
inline constexpr std::array<double, 3> whiteD50 = {0.9642, 1.0, 0.8249};

/// A profile of curves, and of a matrix where it is RGB, without tables in several dimensions. Such a profile
/// means the same under every intent but the absolute one.
struct Shaper {
  int components = 3;  // 3 for RGB, 1 for gray
  std::array<ToneCurve, 3> curves;
  /// Light of the components to XYZ relative to D50. Gray is its first column.
  Matrix3 toXYZ{};

  /// Nothing for a profile of any other kind.
  static std::optional<Shaper> ofProfile(const CheckedProfile& profile);
  /// XYZ to light of the components; gray is its first row. Nothing when the matrix cannot be undone.
  std::optional<Matrix3> fromXYZ() const;
};

}  // namespace ostra
