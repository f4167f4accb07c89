#pragma once
#include <string>
#include <vector>

namespace ostra {

/// Where file managers lie and look, for one user of one system.
struct DesktopFolders {
  /// The user's own: the only ones that are ever written to.
  std::string userData, userConfig;
  /// The system's, in the order in which they are searched.
  std::vector<std::string> data, config, libraries, executables;
};

/// Those of this process. Throws `UsageError` when the user has no home.
DesktopFolders desktopFolders();

/// The first file of that name in these folders, or an empty text.
std::string firstFile(const std::vector<std::string>& folders, const std::string& name);

}  // namespace ostra
