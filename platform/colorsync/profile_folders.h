#pragma once
#include <functional>
#include <string>
#include <vector>

namespace ostra {

/// The folders in which desktops keep profiles, the user's own first. They need not exist.
std::vector<std::string> profileFolders();

/// Called with a path and an open, readable descriptor of it, which stays the caller's; false ends the visit.
using ProfileFileVisitor = std::function<bool(const std::string& path, int file)>;

/// Opens every regular file called .icc or .icm (any case) in the folders and below them; links are followed.
/// Nothing else is opened, and what cannot be is passed over. A folder that is met a second time, through a
/// link or a second name, is not entered again. Per folder: files by name, then subfolders by name.
void visitProfileFiles(const std::vector<std::string>& folders, const ProfileFileVisitor& visit);

}  // namespace ostra
