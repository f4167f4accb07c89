#include "host/stop_signals.h"

#include <atomic>

namespace ostra {
namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

std::atomic<int> receivedSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "set in a signal handler");

void remember(int signal) { receivedSignal = signal; }

}  // namespace

StopSignals::StopSignals() : before_{} {
  receivedSignal = 0;
  struct sigaction action {};
  action.sa_handler = remember;
  sigemptyset(&action.sa_mask);
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    sigaction(kSignals[i], nullptr, &before_[i]);
    if (before_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
  }
}

StopSignals::~StopSignals() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
  receivedSignal = 0;
}

std::optional<int> StopSignals::received() {
  const int signal = receivedSignal;
  return signal == 0 ? std::nullopt : std::optional<int>(signal);
}

}  // namespace ostra
