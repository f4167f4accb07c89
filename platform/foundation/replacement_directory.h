#pragma once
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/file_place.h"

namespace ostra {

/// Entries that pass away by themselves have a name of their own: ".ostra-", the number of the process, "-"
/// and six letters or digits. A replacement directory has one, in the user's cache folder or beside the
/// picture; so has a file that is being written beside the one whose place it will take.
std::string passingName();
/// The process in such a name; nothing for any other name.
std::optional<int> processOfPassingName(std::string_view name);

/// Makes a fresh folder, mode 0700, from which an entry can be renamed to `place`: in the user's cache folder
/// where that works, else beside it. Throws `NSError` about `path`, which is what the user calls the file.
std::string makeReplacementDirectory(const FilePlace& place, const std::string& path);

/// Whether a folder was made by that, judged by its name.
bool isReplacementDirectory(std::string_view folder);

/// Removes what crashed and failed runs left in `folder`: entries with such a name that are ours, were last
/// changed over a week ago, and whose process is dead. Never fails; a folder that cannot be read has nothing
/// to remove.
void pruneReplacementDirectories(const std::string& folder);

/// The folder in which replacement directories are made first; nothing when the user has none.
std::optional<std::string> replacementCacheFolder();

}  // namespace ostra
