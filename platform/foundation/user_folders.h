#pragma once
#include <optional>
#include <string>
#include <vector>

namespace ostra {

/// This program's folder in the user's settings ($XDG_CONFIG_HOME or ~/.config) and in the user's cache
/// ($XDG_CACHE_HOME or ~/.cache). It need not exist. Nothing when the user has no home.
std::optional<std::string> settingsFolder();
std::optional<std::string> cacheFolder();

/// The folder of the user's settings of all programs, and the folders of the system's in their order
/// ($XDG_CONFIG_DIRS or /etc/xdg). They need not exist.
std::optional<std::string> userConfigFolder();
std::vector<std::string> systemConfigFolders();

/// The folder of the user's own shared data ($XDG_DATA_HOME or ~/.local/share), and those of the system's in
/// their order ($XDG_DATA_DIRS or /usr/local/share and /usr/share). They need not exist.
std::optional<std::string> userDataFolder();
std::vector<std::string> systemDataFolders();

/// Makes the folder and the missing ones above it, for nobody else to see. False when that failed.
bool makeFolders(const std::string& folder);

}  // namespace ostra
