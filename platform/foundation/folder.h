#pragma once
#include <string>

#include "platform/foundation/unique_fd.h"

namespace ostra {

/// An open folder, as the place from which its entries are named: it stays the same folder whatever is
/// renamed above it.
class Folder {
 public:
  /// Not open when that failed; errno says why.
  explicit Folder(const std::string& path);
  explicit operator bool() const { return static_cast<bool>(descriptor_); }
  int get() const { return descriptor_.get(); }

  /// Waits until the folder's entries are on the disk; `file` is any open file of the same file system. 0 or
  /// an errno.
  int sync(int file) const;

 private:
  UniqueFd descriptor_;
};

}  // namespace ostra
