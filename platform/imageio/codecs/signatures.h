#pragma once
#include "platform/imageio/codec.h"

namespace ostra {

// Of the formats whose codecs are in modules: known without loading them.

bool matchesWebp(FileBytes head);
// By the brands of the first box (ISO/IEC 14496-12, ftyp): the file's own kind, or where that is a general
// one the first that says more.
bool matchesHeic(FileBytes head);
bool matchesHeics(FileBytes head);
bool matchesAvif(FileBytes head);
bool matchesAvis(FileBytes head);
bool matchesHeif(FileBytes head);

}  // namespace ostra
