#pragma once
#include "platform/imageio/modules/jxl/jxl_structure.h"

namespace ostra {

/// The first frame, whole.
Answer<Pixels> decodeJxl(ByteView file, const JxlStructure& structure, const Limits& limits);

}  // namespace ostra
