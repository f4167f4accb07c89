#pragma once
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/integration/desktop_folders.h"
#include "host/integration/menu_files.h"

namespace ostra {

/// How a file manager takes entries from a user.
enum class MenuMechanism {
  serviceMenu,
  fileManagerActions,
  nemoActions,
  thunarActions,
  nautilusScripts,
  cajaScripts
};

/// A file manager that entries can be written for.
struct FileManager {
  std::string_view name;
  std::string_view executable;
  MenuMechanism mechanism;
  /// What a package of ours puts below one of the system's folders to serve it.
  std::string_view servedByData = {};
  std::string_view servedByLibrary = {};
  /// What makes it show new entries; empty where it notices them.
  std::string_view shownAfter = {};
  /// A library of its own without which it shows none, and the package of that; empty where it needs none.
  std::string_view neededLibrary = {}, neededPackage = {};
};

std::span<const FileManager> knownFileManagers();

bool isInstalled(const FileManager& manager, const DesktopFolders& folders);
/// Whether a package of the system brings the entries already.
bool isServed(const FileManager& manager, const DesktopFolders& folders);
bool lacksLibrary(const FileManager& manager, const DesktopFolders& folders);

/// The files of a mechanism by their whole paths. Thunar's actions are no files of their own: none.
std::vector<MenuFile> filesFor(MenuMechanism mechanism, const Menu& menu, const std::string& templates,
                               const DesktopFolders& folders);

}  // namespace ostra
