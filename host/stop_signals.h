#pragma once
#include <array>
#include <csignal>
#include <functional>
#include <optional>
#include <thread>

#include "platform/foundation/unique_fd.h"

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

/// For work that waits for something else than the next picture: calls `arrived` once, on a thread of its
/// own, as soon as such a signal has come; at once when it came before. What is called must not wait for the
/// thread that ends this, for its end waits for the call.
class StopListener {
 public:
  explicit StopListener(std::function<void()> arrived);
  ~StopListener();
  StopListener(const StopListener&) = delete;
  StopListener& operator=(const StopListener&) = delete;

 private:
  const UniqueFd ended_;
  std::thread thread_;
};

}  // namespace ostra
