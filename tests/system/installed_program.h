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

  ProgramResult run(const std::vector<std::string>& arguments, ProgramOptions options = {}) const;
  FaultedRun runWithFault(const std::vector<std::string>& arguments, const std::string& armedBy,
                          const std::optional<Fault>& fault) const;
  const std::string& path() const { return path_; }
  std::vector<std::string> environment() const;

 private:
  TemporaryFolder folder_;
  std::string path_;
};

}  // namespace ostra::test
