#pragma once
#include "platform/imageio/codec.h"

namespace ostra {

// Of the formats whose codecs are in modules: known without loading them.

bool matchesTiff(FileBytes head);
bool matchesJpeg2000(FileBytes head);
bool matchesJxl(FileBytes head);
bool matchesWebp(FileBytes head);

}  // namespace ostra
