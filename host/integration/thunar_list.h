#pragma once
#include <string>
#include <vector>

#include "host/integration/desktop_folders.h"
#include "host/integration/home_files.h"

namespace ostra {

/// The user's list of Thunar's custom actions.
std::string thunarListFile(const DesktopFolders& folders);
/// Puts these actions into it in place of our former ones, or takes ours away when there are none. A list
/// that is missing begins as the system's, so that its actions are not lost, and goes again with ours where
/// nobody changed it. One that is no list is left alone, which is told.
void bringThunarActions(const std::vector<std::string>& actions, const DesktopFolders& folders,
                        HomeFiles& home);

}  // namespace ostra
