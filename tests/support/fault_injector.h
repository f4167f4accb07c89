#pragma once
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "tests/support/program.h"

namespace ostra::test {

/// What happens instead of one system call, or before it.
struct Fault {
  enum class Kind {
    death,       // SIGKILL
    error,       // the call gives back `error` and does nothing; a closing closes all the same
    shortWrite,  // a call that writes is told to write half
    pause,       // the program stands still while `meanwhile` runs
  };
  Kind kind = Kind::death;
  /// Which of the counted calls, the first is 0; of the calls named `call` only, if that is not empty.
  std::size_t at = 0;
  std::string call;
  int error = 0;
  /// All later calls too, but those on the program's own input, output and error. EINTR strikes every other
  /// call only: no kernel interrupts for ever.
  bool lasting = false;
  std::function<void(pid_t program)> meanwhile;
};

/// How a program is run, and which of its calls count.
struct Injection {
  /// Calls count from the first opening of a file whose path ends so: the loader's own are left alone.
  std::string armedBy;
  /// That opening happens after the program has started a thread: nothing before it is looked at, which is
  /// several times as fast.
  bool armsInThread = false;
  std::optional<Fault> fault;
  /// Not only the calls on files.
  bool countsAllCalls = false;
  /// Calls that bring something to the disk answer success and do nothing.
  bool flushesAreEmpty = false;
  /// The file system does not know how to exchange two files.
  bool exchangeIsUnknown = false;
};

struct FaultedRun {
  int status = -1;  // exit status, or 128 + signal
  std::string errors;
  /// The names of the calls that were counted, in their order.
  std::vector<std::string> calls;
  /// Whether the fault happened: a program with threads makes a call more or less now and then.
  bool struck = false;
  /// Processes that the program started and that were still there seconds after its end; they are ended.
  int leftBehind = 0;
};

/// Whether calls of programs can be changed here: an x86-64 kernel that lets us trace.
bool canInjectFaults();

/// Runs a program and disturbs the calls of all its threads. Processes that it starts are let alone: one that
/// decodes under a filter of its own would be ended by the filter, not by the fault. A program that hangs is
/// ended with SIGABRT after half a minute.
FaultedRun runWithFault(const std::vector<std::string>& arguments, const Injection& injection,
                        const ProgramOptions& options = {});

}  // namespace ostra::test
