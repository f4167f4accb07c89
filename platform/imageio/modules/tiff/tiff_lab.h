#pragma once
#include <array>
#include <cstdint>

namespace ostra {

/// How CIELAB is stored. TIFF 6.0 (section 23) has signed a and b, ICC profiles unsigned ones around the
/// middle, and a lightness of 100 in the highest byte alone.
struct LabEncoding {
  bool wholeBytes = true;  // 8 bits, widened to 16
  bool ofProfiles = false;
};

/// CIELAB under D50 to ROMM RGB, 16 bits, clipped to its gamut.
void labToROMM(const std::uint16_t* lab, LabEncoding encoding, std::array<std::uint16_t, 4>& pixel);

}  // namespace ostra
