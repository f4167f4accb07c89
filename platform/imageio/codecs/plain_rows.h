#pragma once
#include <cstdint>

#include "platform/imageio/codec_door.h"
#include "platform/imageio/straight_rows.h"

namespace ostra {

/// The rows of a picture as a writer of our own takes them: gray or RGB, then straight alpha where the
/// picture has one, closely packed. Written with 8 bits, deeper samples are rounded.
class PlainRows {
 public:
  /// `bits` is 8, or 16 where the picture has as many: little-endian words then.
  PlainRows(const Pixels& pixels, unsigned bits);

  unsigned colours() const { return colours_; }
  bool hasAlpha() const { return alpha_; }
  unsigned samples() const { return colours_ + (alpha_ ? 1 : 0); }
  /// Valid until the next call.
  const std::uint8_t* row(std::uint32_t y);

  /// Gray alone, or blue, green, red and then alpha: for rows of 8 bits. Gray with alpha is three equal ones.
  unsigned blueFirstSamples() const { return samples() == 1 ? 1 : alpha_ ? 4 : 3; }
  /// A row of them.
  void storeBlueFirst(std::uint32_t y, std::uint8_t* to);

 private:
  const Layout& layout_;
  StraightRows straight_;
  unsigned bits_;
  unsigned colours_;
  bool alpha_;
  Bytes buffer_;
};

}  // namespace ostra
