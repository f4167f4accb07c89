#pragma once
#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/imageio/modules/tiff/tiff_directory.h"

namespace ostra {

/// Takes packed samples apart, the highest bits first where they share bytes: integers from 0 (the lowest, of
/// signed ones) to 65535, floating point from 0 to 1, clamped.
class TiffSamples {
 public:
  TiffSamples(std::uint16_t bits, std::uint16_t format);

  /// As many samples as `out` takes, from a row that holds them.
  void unpack(const std::uint8_t* row, std::span<std::uint16_t> out) const { unpack_(row, out, bits_); }
  /// The numbers themselves, such as the entries of a palette; for at most 16 bits.
  static void unpackNumbers(const std::uint8_t* row, std::span<std::uint16_t> out, std::uint16_t bits);

 private:
  std::uint16_t bits_;
  void (*unpack_)(const std::uint8_t* row, std::span<std::uint16_t> out, std::uint16_t bits);
};

}  // namespace ostra
