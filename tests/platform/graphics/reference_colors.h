#pragma once
#include <array>
#include <string_view>
#include <vector>

namespace ostra::test {

/// Values of a pixel as fractions, 1 or 3 of them.
using Values = std::vector<double>;

/// What a space's published numbers make of a colour, in double precision and with none of the program's
/// code. `from` and `to` are names of color_space.h. Not clipped before the last step.
Values convertByNumbers(std::string_view from, std::string_view to, const Values& values);

/// All eight names.
const std::vector<std::string_view>& namedSpaces();
bool isGray(std::string_view name);

}  // namespace ostra::test
