#pragma once
#include <map>
#include <optional>
#include <string>

#include <sys/types.h>

#include "platform/foundation/bytes.h"

namespace ostra::test {

/// What must survive of a file: its bytes, and what its user gave it.
struct FileState {
  Bytes bytes;
  mode_t mode = 0;
  uid_t owner = 0;
  gid_t group = 0;
  /// The extended attributes, access lists among them, without security labels.
  std::map<std::string, std::string> attributes;

  bool operator==(const FileState&) const = default;
};

/// Nothing when there is no such file.
std::optional<FileState> fileStateAt(const std::string& path);

/// Gives a file an unusual mode and, where rights and the file system allow, owner, attribute and access
/// list.
void markFile(const std::string& path);

/// What of a state is not that of another, in words.
std::string differenceOf(const std::optional<FileState>& now, const std::optional<FileState>& then);

}  // namespace ostra::test
