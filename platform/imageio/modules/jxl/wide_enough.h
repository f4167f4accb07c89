#pragma once
#include <jxl/color_encoding.h>

#include "platform/foundation/bytes.h"
#include "platform/graphics/color_space.h"

namespace ostra {

/// The smallest of sRGB, Display P3, BT.2020 and ROMM RGB, each with sRGB's curve, that holds the primaries
/// of a profile; the largest for a profile that tells none. Gray has the curve alone.
JxlColorEncoding wideEnough(ByteView profile, CGColorSpaceModel model);

}  // namespace ostra
