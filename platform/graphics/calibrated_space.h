#pragma once
#include <array>
#include <optional>

#include "platform/graphics/color_space.h"
#include "platform/graphics/icc_writer.h"

namespace ostra {

/// Red, green and blue of a profile's matrix, from chromaticities as x, y pairs. Nothing where they make
/// none.
std::optional<std::array<std::int32_t, 9>> colorantsOf(const std::array<double, 2>& white,
                                                       const std::array<double, 6>& primaries);

}  // namespace ostra
