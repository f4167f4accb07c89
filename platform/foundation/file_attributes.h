#pragma once
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ostra {

/// What `keepAttributes` must keep of a file; compared, it tells whether somebody changed any of it.
struct FileAttributes {
  unsigned user = 0, group = 0, mode = 0;
  std::map<std::string, std::vector<char>> named;

  bool operator==(const FileAttributes&) const = default;
};

/// Nothing, with errno set, when the system does not say.
std::optional<FileAttributes> fileAttributes(int file);

/// Gives the file open at `to` the owner, group, mode, access list and extended attributes of the one open at
/// `from`. Security labels and the flags that file systems keep are given where that is allowed. Attributes
/// of its own that `from` does not have stay. 0, or the errno of what could not be kept, after which `to` has
/// a part of them.
int keepAttributes(int from, int to);

}  // namespace ostra
