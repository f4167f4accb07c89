#pragma once
#include <array>
#include <memory>
#include <optional>
#include <vector>

#include "platform/foundation/bytes.h"

namespace ostra::test {

/// What a profile of curves, with a matrix where it is RGB, says about colours: the formulas of ICC.1 in
/// double precision, read from the profile's own bytes. It shares nothing with the program.
class IccEvaluator {
 public:
  using XYZ = std::array<double, 3>;

  /// Nothing for a profile with tables, or with a curve that cannot be undone.
  static std::optional<IccEvaluator> of(ByteView profile);

  int components() const { return gray_ ? 1 : 3; }
  /// Of `components` values from 0 to 1, relative to D50.
  XYZ toXYZ(const double* values) const;
  /// Clipped to 0 to 1.
  void fromXYZ(const XYZ& xyz, double* values) const;

 private:
  struct Curve {
    double g = 1, a = 1, b = 0, c = 0, d = 0, e = 0, f = 0;
    bool toe = false;
    std::vector<double> table;

    double light(double value) const;
    double value(double light) const;
  };
  static std::optional<Curve> readCurve(ByteView tag);
  bool readColour(ByteView profile);

  bool gray_ = false;
  bool lab_ = false;  // gray whose curve gives lightness
  std::array<Curve, 3> curves_;
  std::array<std::array<double, 3>, 3> matrix_{}, inverse_{};
};

}  // namespace ostra::test
