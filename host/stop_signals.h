#pragma once
#include <array>
#include <csignal>
#include <optional>

namespace ostra {

/// While it lives, an interrupt, a request to terminate or a hang-up ends nothing by itself: it is
/// remembered, and whoever starts the next picture looks. Signals that the parent had ignored stay ignored. A
/// system call of the main thread (a question to the user) is interrupted. One at a time.
class StopSignals {
 public:
  StopSignals();
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  /// The last such signal since the making of the object that lives, or nothing. Any thread.
  static std::optional<int> received();

 private:
  std::array<struct sigaction, 3> before_;
};

}  // namespace ostra
