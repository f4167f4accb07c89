#pragma once
#include <optional>
#include <string>

namespace ostra {

/// This program's folder in the user's settings ($XDG_CONFIG_HOME or ~/.config) and in the user's cache
/// ($XDG_CACHE_HOME or ~/.cache). It need not exist. Nothing when the user has no home.
std::optional<std::string> settingsFolder();
std::optional<std::string> cacheFolder();

/// Makes the folder and the missing ones above it, for nobody else to see. False when that failed.
bool makeFolders(const std::string& folder);

}  // namespace ostra
