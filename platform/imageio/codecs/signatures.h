#pragma once
#include "platform/imageio/codec.h"

namespace ostra {

// Of the formats whose codecs are in modules: known without loading them.

bool matchesTiff(FileBytes head);
bool matchesJpeg2000(FileBytes head);
bool matchesJxl(FileBytes head);
bool matchesExr(FileBytes head);
/// TIFF files, of which cameras' own are some: their reader sees which.
bool matchesTiffRaw(FileBytes head);
bool matchesCr2(FileBytes head);
bool matchesCr3(FileBytes head);
bool matchesCrw(FileBytes head);
bool matchesMrw(FileBytes head);
bool matchesOrf(FileBytes head);
bool matchesRaf(FileBytes head);
bool matchesRw2(FileBytes head);
bool matchesWebp(FileBytes head);
// By the brands of the first box (ISO/IEC 14496-12, ftyp): the file's own kind, or where that is a general
// one the first that says more.
bool matchesHeic(FileBytes head);
bool matchesHeics(FileBytes head);
bool matchesAvif(FileBytes head);
bool matchesAvis(FileBytes head);
bool matchesHeif(FileBytes head);

}  // namespace ostra
