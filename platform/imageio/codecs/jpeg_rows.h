#pragma once
#include <cstdint>

#include "platform/imageio/straight_rows.h"

namespace ostra {

/// The rows of a picture as a JPEG encoder takes them: 8 bits, no alpha, ink inverted as the Adobe programs
/// store it. Rows that are so already are not copied.
class JpegRows {
 public:
  explicit JpegRows(const Pixels& pixels);

  /// Samples of a pixel in `row`: 1, 3, or 4, the fourth of RGB to be skipped.
  int samples() const { return samples_; }
  /// Valid until the next call.
  const std::uint8_t* row(std::uint32_t y);

 private:
  void convert(const std::uint8_t* from);
  void putOnWhite(const std::uint8_t* from);

  const Pixels& pixels_;
  StraightRows straight_;
  int stored_;  // samples of a pixel in memory
  int samples_;
  bool alpha_;
  bool ink_;
  Bytes buffer_;  // one row; empty when rows are passed on
};

}  // namespace ostra
