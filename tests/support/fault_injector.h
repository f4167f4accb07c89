#pragma once
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/program.h"

namespace ostra::test {

/// What happens instead of one system call.
struct Fault {
  /// Which of the counted calls, the first is 0.
  std::size_t at = 0;
  /// The error that the call gives back without having done anything; nothing kills the program before the
  /// call.
  std::optional<int> error;
};

struct FaultedRun {
  int status = -1;  // exit status, or 128 + signal
  std::string errors;
  /// The names of the calls that were counted, in their order.
  std::vector<std::string> calls;
};

/// Whether calls of programs can be changed here: an x86-64 kernel that lets us trace.
bool canInjectFaults();

/// Runs a program, with all its threads and children, and lets one of its file-system calls fail. Calls count
/// from the first opening of a file whose path ends with `armedBy`, so that the loader's own are left alone.
/// A program that hangs is ended with SIGABRT after half a minute.
FaultedRun runWithFault(const std::vector<std::string>& arguments, const std::string& armedBy,
                        const std::optional<Fault>& fault, const ProgramOptions& options = {});

}  // namespace ostra::test
