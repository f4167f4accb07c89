#pragma once
#include <string>
#include <vector>

#include <sys/types.h>

#include "platform/foundation/unique_fd.h"

namespace ostra::test {

/// A program on a terminal of its own, its controlling one, with somebody in front who reads and types. Every
/// wait ends by itself after a while.
class TerminalSession {
 public:
  /// `environment` is added to this process's, NAME=VALUE. As nobody (65534), where that is asked for and the
  /// test runs as root.
  TerminalSession(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
                  bool asOrdinaryUser = false);
  ~TerminalSession();
  TerminalSession(const TerminalSession&) = delete;
  TerminalSession& operator=(const TerminalSession&) = delete;

  /// Reads until the text is on the screen; false when it does not come.
  bool waitFor(const std::string& text);
  void type(const std::string& keys) const;
  void signal(int number) const;
  /// The exit status, or 128 + signal; -1 when the program did not end by itself. Reads to the end.
  int waitForEnd();
  /// Everything that was on the screen so far.
  const std::string& screen() const { return screen_; }

 private:
  bool readMore();

  UniqueFd person_;
  pid_t program_ = -1;
  std::string screen_;
};

}  // namespace ostra::test
