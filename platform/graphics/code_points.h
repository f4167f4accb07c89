#pragma once
#include "platform/graphics/color_space.h"

namespace ostra {

/// The space of full-range pixels whose primaries and transfer function are told by their numbers in
/// ITU-T H.273; gray pixels have the curve alone. `model` is gray or RGB. Null for numbers that no space of
/// ours says: reserved ones and logarithms. Of high dynamic range it is the space that a display without it
/// shows.
CGColorSpaceRef spaceOfCodePoints(unsigned primaries, unsigned transfer, CGColorSpaceModel model);

}  // namespace ostra
