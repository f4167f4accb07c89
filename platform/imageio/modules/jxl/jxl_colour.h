#pragma once
#include <jxl/decode.h>

#include "platform/imageio/modules/jxl/jxl_structure.h"

namespace ostra {

/// What decoded pixels will mean, told by a decoder that has read the colour's header: fills `profile` and
/// `wanted`. False when it cannot be told. Throws `LimitExceeded`.
bool readJxlColour(JxlDecoder* decoder, const Limits& limits, JxlStructure& structure);

}  // namespace ostra
