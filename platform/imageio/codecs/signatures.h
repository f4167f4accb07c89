#pragma once
#include "platform/imageio/codec.h"

namespace ostra {

// Of the formats whose codecs are in modules: known without loading them.

bool matchesExr(FileBytes head);
bool matchesWebp(FileBytes head);

}  // namespace ostra
