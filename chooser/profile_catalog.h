#pragma once
#include <string>
#include <vector>

#include "platform/graphics/color_space.h"

namespace ostra {

/// A colour space that a picture can be converted to.
struct OstraColorProfile {
  /// What the pop-up shows and what is remembered: a title of ours, or the installed profile's description.
  std::string name;
  /// Never null.
  CGColorSpaceRef space;
};

/// The two sources of profiles. Each call makes its list afresh, fails never, and leaves out without a word
/// what cannot be used.
struct OstraColorProfileCatalog {
  OstraColorProfileCatalog() = delete;

  /// The well-known spaces that the platform can make, in a fixed order; the first is the default.
  static std::vector<OstraColorProfile> builtIns();
  /// The installed RGB and gray profiles in the order of their names, no two of a name, letter case aside.
  /// Some may be called like a well-known space. Reads every profile that could be one of them.
  static std::vector<OstraColorProfile> installed();
};

}  // namespace ostra
