#pragma once
#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/imageio/modules/tiff/tiff_directory.h"

namespace ostra {

/// Takes packed samples apart: integers, the highest bits first where they share bytes.
class TiffIntegers {
 public:
  /// `raw`: the numbers themselves, of at most 16 bits. Else from 0 (the lowest, of signed ones) to 65535.
  TiffIntegers(std::uint16_t bits, std::uint16_t format, bool raw);

  /// As many samples as `out` takes, from a row that holds them.
  void unpack(const std::uint8_t* row, std::span<std::uint16_t> out) const;

 private:
  std::uint16_t bits_;
  bool isSigned_, raw_;
};

/// Floating point of 16, 32 or 64 bits.
void unpackTiffReals(std::uint16_t bits, const std::uint8_t* row, std::span<float> out);

}  // namespace ostra
