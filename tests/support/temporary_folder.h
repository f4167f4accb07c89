#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/bytes.h"
#include "platform/foundation/url.h"

namespace ostra::test {

/// A fresh folder that is removed, with all in it, at the end of the scope.
class TemporaryFolder {
 public:
  TemporaryFolder();
  /// Beside `parent`'s other entries, for tests that need a certain file system.
  explicit TemporaryFolder(const std::string& parent);
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::string& path() const { return path_; }
  std::string path(std::string_view name) const { return path_ + "/" + std::string(name); }
  /// Names of all entries, hidden ones too, sorted.
  std::vector<std::string> names() const;

 private:
  std::string path_;
};

Bytes readFile(const std::string& path);
void writeFile(const std::string& path, ByteView bytes);
void writeFile(const std::string& path, std::string_view text);

}  // namespace ostra::test
