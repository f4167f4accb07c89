#pragma once
#include <map>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace ostra::test {

/// A user's home, a system's folders beside it, and file managers that are there in name only.
class HomeFolder {
 public:
  HomeFolder();
  std::string home(const std::string& name = "") const { return folder_.path("home" + name); }
  std::string system(const std::string& name = "") const { return folder_.path("system" + name); }
  /// A file of the home or the system, by its whole path; its folders are made.
  void write(const std::string& path, const std::string& text, unsigned mode = 0644) const;
  std::string read(const std::string& path) const;
  void install(const std::string& fileManager) const;
  /// What a program needs so that it sees nothing but this home and this system.
  std::vector<std::string> environment(const std::string& locale = "C.UTF-8") const;

  /// Everything in the home by path: kind, mode, and contents or target.
  std::map<std::string, std::string> snapshot() const;

 private:
  TemporaryFolder folder_;
};

}  // namespace ostra::test
