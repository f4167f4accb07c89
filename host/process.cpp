#include "host/process.h"

#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace ostra {
namespace {

/// A program started without standard streams would open a picture as one of them, and print into it.
void openMissingStandardStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (fcntl(stream, F_GETFD) >= 0) continue;
    if (open("/dev/null", O_RDWR) < 0) _exit(2);  // takes the lowest number, which is this one
  }
}

/// A closed pipe and a full quota are errors of the call, not the end of a program that holds a half-written
/// file.
void ignoreWriteSignals() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace

void prepareProcess() {
  openMissingStandardStreams();
  ignoreWriteSignals();
}

}  // namespace ostra
