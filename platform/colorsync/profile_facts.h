#pragma once
#include <optional>
#include <string>

namespace ostra {

/// What header and description of a profile say. Nothing of it has been checked against the rest.
struct ProfileFacts {
  /// One line of UTF-8, in the user's language where the profile has it; never empty.
  std::string description;
  /// Four characters each, as they stand in the header.
  std::string colorSpace;
  std::string profileClass;
};

/// Reads header, tag table and description of an open file, and never more than 150 KB of it. Nothing when
/// there is no profile, or no description that can be read.
std::optional<ProfileFacts> profileFacts(int file);

}  // namespace ostra
