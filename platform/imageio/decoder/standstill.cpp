#include "platform/imageio/decoder/standstill.h"

#include <algorithm>
#include <ctime>
#include <optional>

#include <poll.h>

namespace ostra {
namespace {

using namespace std::chrono_literals;

// Counted in short waits: what stops the whole machine, or this program too, is one of them at most.
constexpr std::chrono::milliseconds kWait = 3s;
constexpr int kMostIdleWaits = 5;

/// The processor time that it has used; nothing when it cannot be told.
std::optional<std::chrono::nanoseconds> workedBy(pid_t process) {
  clockid_t clock{};
  timespec time{};
  if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &time) != 0) return std::nullopt;
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace

bool waitWhileItWorks(const DecoderProcess& worker, Channel::Deadline deadline) {
  auto worked = workedBy(worker.id);
  for (int idle = 0; idle < kMostIdleWaits;) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left <= 0ms) return false;
    pollfd event{worker.channel.descriptor(), POLLIN, 0};
    if (poll(&event, 1, static_cast<int>(std::min(left, kWait).count())) > 0) return true;
    const auto now = workedBy(worker.id);
    idle = now && now == worked ? idle + 1 : 0;
    worked = now;
  }
  return false;
}

}  // namespace ostra
