#include "host/stop_signals.h"

#include <atomic>
#include <cerrno>
#include <iterator>
#include <system_error>

#include <poll.h>
#include <sys/eventfd.h>

namespace ostra {
namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

std::atomic<int> receivedSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "set in a signal handler");

/// Readable once a signal came; -1 while nobody has listened. Made once and kept: a handler may always run.
std::atomic<int> arrival{-1};

void raiseArrival() {
  const int error = errno;
  const int event = arrival;
  if (event >= 0) eventfd_write(event, 1);
  errno = error;
}

void remember(int signal) {
  receivedSignal = signal;
  raiseArrival();
}

UniqueFd makeEvent() {
  UniqueFd event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!event) throw std::system_error(errno, std::generic_category(), "eventfd");
  return event;
}

/// On the main thread, as everything that listens.
int arrivalEvent() {
  if (arrival < 0) arrival = makeEvent().release();
  if (receivedSignal != 0) raiseArrival();  // one that came before there was an event
  return arrival;
}

void forget() {
  receivedSignal = 0;
  eventfd_t count = 0;
  if (arrival >= 0) eventfd_read(arrival, &count);
}

}  // namespace

StopSignals::StopSignals() : before_{} {
  forget();
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
  forget();
}

std::optional<int> StopSignals::received() {
  const int signal = receivedSignal;
  return signal == 0 ? std::nullopt : std::optional<int>(signal);
}

StopListener::StopListener(std::function<void()> arrived) : ended_(makeEvent()) {
  thread_ = std::thread([signal = arrivalEvent(), end = ended_.get(), call = std::move(arrived)] {
    pollfd events[] = {{signal, POLLIN, 0}, {end, POLLIN, 0}};
    while (poll(events, std::size(events), -1) < 0 && errno == EINTR) {
    }
    if (events[0].revents != 0) call();
  });
}

StopListener::~StopListener() {
  eventfd_write(ended_.get(), 1);
  thread_.join();
}

}  // namespace ostra
