#pragma once
#include <string>

namespace ostra {

/// Where a file really stands: the folder that holds its entry, without links on the way, and its name there.
struct FilePlace {
  std::string folder;
  std::string name;
  std::string path() const { return joined(folder, name); }

  static std::string joined(const std::string& folder, const std::string& name) {
    return folder.ends_with('/') ? folder + name : folder + "/" + name;
  }
};

/// The place of the file at `path`, links followed. The file itself may be missing, and a link may lead to a
/// missing one; their folders may not. Throws the errno as an `NSError` about a write to `path`.
FilePlace placeOf(const std::string& path);

}  // namespace ostra
