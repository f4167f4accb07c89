#pragma once
#include <lcms2.h>

namespace ostra {

/// The context that the colour library works in. Never freed: transforms of static lifetime refer to it.
/// Throws `std::bad_alloc`.
cmsContext colorLibrary();

/// A piece of work of the colour library on this thread. The library takes a failed allocation for a fault of
/// the profile and goes on where it can, which would be other colours: so whoever asks it for something asks
/// afterwards whether it had the memory.
class LibraryWork {
 public:
  LibraryWork();
  /// Throws `std::bad_alloc` when the library lacked memory since this was made.
  void check() const;
};

}  // namespace ostra
