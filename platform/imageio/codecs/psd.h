#pragma once
#include "platform/imageio/codec.h"

namespace ostra {

/// Photoshop documents, small and large (PSB), read only: the merged picture, of 1, 8, 16 and 32 bits, as
/// bitmap, gray, duotone (its gray), indexed, RGB, CMYK or Lab, stored plainly or with PackBits. One without
/// a merged picture is a fault, and so are multichannel ones.
bool matchesPsd(FileBytes head);
Answer<std::unique_ptr<CodecReader>> openPsd(FileBytes file, const Limits& limits);

}  // namespace ostra
