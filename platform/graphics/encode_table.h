#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/graphics/tone_curve.h"

namespace ostra {

/// The inverse of a tone curve as straight pieces, fine enough for 16 bits: light 0 to 1 to a value 0 to 1.
///
/// Inverse formulas are steep at black, so their pieces have equal lengths within one octave of light, and
/// the exponent and the first bits of a float select the piece. A formula's own toe is kept apart, as the
/// exact line that it is. The entries of a stored table are words, so that its inverse bends and jumps at
/// multiples of 1/65535 only: pieces of that length are the inverse itself.
class EncodeTable {
 public:
  explicit EncodeTable(const ToneCurve& curve);

  /// `values` in place, by the fastest way that this processor has. Light outside 0 to 1 is clipped.
  void run(float* values, std::size_t count) const;
  /// The same by the way that every processor has.
  void runPlainly(float* values, std::size_t count) const;

  /// What a loop needs to know of a formula. `first` and `last` count pieces from the darkest float.
  struct Pieces {
    const float* base;
    const float* slope;
    std::int32_t shift, first, last;
    float toeEnd, toeSlope;
  };

 private:
  void addFormula(const ToneCurve& curve);
  void addTable(const std::vector<double>& table);
  Pieces pieces() const;

  bool stored_ = false;  // pieces of a stored table: a base and a slope per word of light
  std::int32_t shift_ = 0, firstPiece_ = 0, lastPiece_ = 0;
  float toeEnd_ = 0, toeSlope_ = 0;
  std::vector<float> base_, slope_;
};

}  // namespace ostra
