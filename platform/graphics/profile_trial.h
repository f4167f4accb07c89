#pragma once
#include "platform/foundation/bytes.h"

namespace ostra {

/// What the process that decodes a picture does with the profile that came with it, before it hands it on:
/// the colour library is given it there as it will be in the program, so that a profile on which the library
/// crashes or hangs costs that process alone. Replaceable through `Service<ProfileTrial>`.
class ProfileTrial {
 public:
  virtual ~ProfileTrial() = default;
  /// Whatever comes of it is no answer: a profile that the library refuses is refused again in the program.
  /// May throw `std::bad_alloc`.
  virtual void run(ByteView profile) = 0;

  /// Opens the profile, converts from it and to it, a few hundred colours each.
  static ProfileTrial& standard();
};

}  // namespace ostra
