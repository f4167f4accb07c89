#pragma once
#include "platform/graphics/color_space.h"

namespace ostra {

/// The space of full-range pixels whose primaries and transfer function are told by their numbers in
/// ITU-T H.273; gray pixels have the curve alone. `model` is gray or RGB. Null for numbers that no space of
/// ours says: reserved ones, logarithms, and the curves of high dynamic range, which are no fractions of a
/// white.
CGColorSpaceRef spaceOfCodePoints(unsigned primaries, unsigned transfer, CGColorSpaceModel model);

}  // namespace ostra
