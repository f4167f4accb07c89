#pragma once
#include "platform/imageio/modules/raw/raw_library.h"

namespace ostra {

/// The space that developed pixels are stored in.
ProfileRecord rawProfile(bool isGray);
/// The developed pixels, which the library has, as a picture.
Answer<Pixels> takeRawPixels(const RawLibrary& library, bool isGray);

}  // namespace ostra
