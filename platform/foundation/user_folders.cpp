#include "platform/foundation/user_folders.h"

#include <cerrno>
#include <cstdlib>
#include <sstream>
#include <string_view>

#include <sys/stat.h>

namespace ostra {
namespace {

constexpr std::string_view kProgram = "/ostra";

/// A value that is no absolute path counts as unset, as the base directory rules have it.
std::optional<std::string> folderIn(const char* variable) {
  const char* value = std::getenv(variable);
  if (value == nullptr || *value != '/') return std::nullopt;
  return value;
}

std::optional<std::string> userFolder(const char* variable, std::string_view underHome) {
  if (auto folder = folderIn(variable)) return folder;
  if (auto home = folderIn("HOME")) return home->append(underHome);
  return std::nullopt;
}

std::optional<std::string> programFolder(const char* variable, std::string_view underHome) {
  auto folder = userFolder(variable, underHome);
  if (folder) folder->append(kProgram);
  return folder;
}

std::vector<std::string> foldersIn(const char* variable, const char* otherwise) {
  const char* named = std::getenv(variable);
  std::istringstream list(named != nullptr && *named != '\0' ? named : otherwise);
  std::vector<std::string> folders;
  for (std::string folder; std::getline(list, folder, ':');) {
    if (folder.starts_with('/')) folders.push_back(std::move(folder));
  }
  return folders;
}

bool makeFolder(const std::string& folder) { return mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST; }

}  // namespace

std::optional<std::string> settingsFolder() { return programFolder("XDG_CONFIG_HOME", "/.config"); }

std::optional<std::string> cacheFolder() { return programFolder("XDG_CACHE_HOME", "/.cache"); }

std::optional<std::string> userConfigFolder() { return userFolder("XDG_CONFIG_HOME", "/.config"); }

std::vector<std::string> systemConfigFolders() { return foldersIn("XDG_CONFIG_DIRS", "/etc/xdg"); }

std::optional<std::string> userDataFolder() { return userFolder("XDG_DATA_HOME", "/.local/share"); }

std::vector<std::string> systemDataFolders() {
  return foldersIn("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
}

bool makeFolders(const std::string& folder) {
  for (std::size_t slash = folder.find('/', 1); slash != std::string::npos;
       slash = folder.find('/', slash + 1)) {
    // One that is missing and cannot be made shows in the last call.
    makeFolder(folder.substr(0, slash));
  }
  return makeFolder(folder);
}

}  // namespace ostra
