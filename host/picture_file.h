#pragma once
#include <string>
#include <string_view>

#include "platform/foundation/error.h"
#include "platform/foundation/url.h"

namespace ostra {

/// `path` from the root, beginning at the current folder; links in it are not resolved.
std::string absolutePath(const std::string& path);

/// The version of the regular file at `path`, which the caller can read. Throws an `NSError` whose sentence
/// says why there is none. Never waits for a pipe's other end and never touches a device.
FileVersion openedVersion(const std::string& path);

}  // namespace ostra
