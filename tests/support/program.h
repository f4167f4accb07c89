#pragma once
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace ostra::test {

struct ProgramResult {
  int status = -1;  // exit status, or 128 + signal
  std::string output;
  std::string errors;
  /// The most memory that it or one of its processes had at once, in bytes.
  std::size_t peakMemory = 0;
};

struct ProgramOptions {
  std::string input;
  /// NAME=VALUE, added to this process's environment.
  std::vector<std::string> environment;
  /// Nobody (65534) instead of root, where the test runs as root.
  bool asOrdinaryUser = false;
  /// Called with the program's process again and again while it runs, with this pause between.
  std::function<void(pid_t)> watch = {};
  std::chrono::milliseconds pause{10};
};

/// Runs a program found on the path and waits for its end.
ProgramResult runProgram(const std::vector<std::string>& arguments, const ProgramOptions& options = {});

/// Whether a program is on the path. A test that needs one which is missing fails where CI is set and is
/// skipped elsewhere: see OSTRA_NEEDS_PROGRAM.
bool haveProgram(const std::string& name);
bool inContinuousIntegration();

/// Starts a test that cannot run without another program.
#define OSTRA_NEEDS_PROGRAM(name)                                                        \
  if (!::ostra::test::haveProgram(name)) {                                               \
    if (::ostra::test::inContinuousIntegration()) FAIL() << name << " is not installed"; \
    GTEST_SKIP() << name << " is not installed";                                         \
  }

}  // namespace ostra::test
