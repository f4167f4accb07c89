#pragma once
#include <array>
#include <cstdint>
#include <span>

#include "platform/foundation/bytes.h"

namespace ostra {

/// Three mantissas and their exponent.
using HdrPixel = std::array<std::uint8_t, 4>;

/// Reads the scanlines of a Radiance picture one after the other.
class HdrScanlines {
 public:
  explicit HdrScanlines(ByteView pixels) : rest_(pixels) {}
  /// Fills one of this length; false when the bytes do not make exactly that.
  bool read(std::span<HdrPixel> scanline);

 private:
  bool readChannels(std::span<HdrPixel> scanline);
  bool readPixels(std::span<HdrPixel> scanline);

  ByteView rest_;
};

}  // namespace ostra
