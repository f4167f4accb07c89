#pragma once
#include <string>
#include <vector>

#include "tests/support/fault_injector.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {

/// The program as a user has it: in a folder that everybody may read, with a home of its own.
class InstalledProgram {
 public:
  InstalledProgram();
  /// With the home in another folder, for tests that need it on a certain file system.
  explicit InstalledProgram(const std::string& home);
  /// The program has no modules until then.
  void installModules() const;

  ProgramResult run(const std::vector<std::string>& arguments, ProgramOptions options = {}) const;
  FaultedRun runWithFault(const std::vector<std::string>& arguments, const Injection& injection) const;
  const std::string& path() const { return path_; }
  const std::string& home() const { return home_; }
  std::vector<std::string> environment() const;

 private:
  TemporaryFolder folder_;
  std::string path_;
  std::string home_;
};

}  // namespace ostra::test
