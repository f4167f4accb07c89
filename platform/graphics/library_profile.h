#pragma once
#include <memory>

#include <lcms2.h>

#include "platform/foundation/bytes.h"
#include "platform/graphics/shaper.h"

namespace ostra {

struct CloseProfile {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
/// A profile that the colour library has open, in the context of `colorLibrary`.
using LibraryProfile = std::unique_ptr<void, CloseProfile>;

/// Parsed by the library. Null when it cannot.
LibraryProfile libraryProfileOf(ByteView icc);
/// Told to the library as numbers: it parses nothing. Null when it refuses them; throws `std::bad_alloc`.
LibraryProfile libraryProfileOf(const Shaper& shaper);

}  // namespace ostra
