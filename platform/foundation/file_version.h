#pragma once
#include <optional>
#include <string>

#include "platform/foundation/url.h"

struct stat;

namespace ostra {

/// The version that the file has now. `status` is what the system answered about it.
FileVersion fileVersionOf(const struct stat& status);
/// Of an open file; nothing when the system does not say.
std::optional<FileVersion> openFileVersion(int file);
/// Of the entry itself: a link is not followed.
std::optional<FileVersion> entryVersion(int folder, const std::string& name);

/// Whether both are the same file, be it in different states.
bool isSameFile(const FileVersion& a, const FileVersion& b);
/// Whether both are the same file with the same contents: renaming a file changes its `changed`, nothing
/// else.
bool isSameContents(const FileVersion& a, const FileVersion& b);

}  // namespace ostra
