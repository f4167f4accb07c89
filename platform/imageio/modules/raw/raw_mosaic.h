#pragma once
#include "platform/imageio/codec.h"

namespace ostra {

/// Whether an entry anywhere in the file gives a mosaic of 36 cells that the entry before it does not call
/// 6 by 6. LibRaw 0.20 as it is built for Debian 12 copies such a one without an end, over its own memory.
/// Entries are looked for at every byte, since the library finds directories where no other reader does.
bool hasBoundlessMosaic(FileBytes file);

}  // namespace ostra
