#include "host/integration/desktop_folders.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "host/usage_error.h"
#include "platform/foundation/user_folders.h"

namespace ostra {
namespace {

std::vector<std::string> foldersOf(const char* list) {
  std::istringstream names(list != nullptr ? list : "");
  std::vector<std::string> folders;
  for (std::string folder; std::getline(names, folder, ':');) {
    if (folder.starts_with('/')) folders.push_back(folder);
  }
  return folders;
}

std::string withoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

}  // namespace

DesktopFolders desktopFolders() {
  const auto data = userDataFolder();
  const auto config = userConfigFolder();
  if (!data || !config) throw UsageError("There is no home folder: HOME is not set.");
  DesktopFolders folders{
      withoutTrailingSlashes(*data), withoutTrailingSlashes(*config),  systemDataFolders(),
      systemConfigFolders(),         foldersOf(OSTRA_LIBRARY_FOLDERS), foldersOf(std::getenv("PATH"))};
  // What lies in the user's own is not the system's, whoever lists it among the others.
  std::erase_if(folders.data,
                [&](const std::string& each) { return withoutTrailingSlashes(each) == folders.userData; });
  return folders;
}

std::string firstFile(const std::vector<std::string>& folders, const std::string& name) {
  std::error_code ignored;
  for (const std::string& folder : folders) {
    std::string path = std::filesystem::path(folder) / name;
    if (std::filesystem::is_regular_file(path, ignored)) return path;
  }
  return "";
}

}  // namespace ostra
