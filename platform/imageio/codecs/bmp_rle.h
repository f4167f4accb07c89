#pragma once
#include <cstddef>
#include <cstdint>

#include "platform/imageio/codecs/bmp_header.h"

namespace ostra {

/// The rows of a run-length coded bitmap, in their stored order: a byte for a pixel of 4 or 8 bits, three for
/// one of 24. Pixels that the code skips are 0, as they are for Windows. Some programs code the padding of an
/// uncoded row with it, whose pixels are no part of the picture.
class BmpRleRows {
 public:
  BmpRleRows(ByteView data, const BmpHeader& header);

  /// What a row takes, with its padding.
  std::size_t rowBytes() const { return room_ * pixelBytes_; }
  /// False when the code ends too early or leaves the picture. `row` has room for a row.
  bool next(std::uint8_t* row);

 private:
  bool readRun(std::uint8_t* row, std::size_t count);
  bool readPixels(std::uint8_t* row, std::size_t count);
  /// Moves the place on; false when the row or the picture ends before that.
  bool skip();
  bool has(std::size_t bytes) const { return data_.size() - at_ >= bytes; }

  ByteView data_;
  std::size_t at_ = 0;
  BmpPacking packing_;
  std::size_t width_, room_;  // in pixels, without and with padding
  std::size_t pixelBytes_;
  std::size_t column_ = 0;
  std::size_t rowsLeft_;  // those not begun
  std::size_t rowsToSkip_ = 0;
  bool ended_ = false;
};

}  // namespace ostra
