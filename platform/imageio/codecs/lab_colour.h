#pragma once
#include <array>
#include <cstdint>

namespace ostra {

/// A colour of the space that kCGColorSpaceROMMRGB names, in 16 bits; of all named spaces the one that holds
/// the most of Lab's colours, and the same white as Lab has (D50). `lightness` is 0 to 100.
std::array<std::uint16_t, 3> rommOfLab(double lightness, double a, double b);

}  // namespace ostra
