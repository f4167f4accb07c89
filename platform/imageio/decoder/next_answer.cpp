#include "platform/imageio/decoder/next_answer.h"

#include <chrono>
#include <csignal>

#include <sys/wait.h>

namespace ostra {

Fault faultOfEnd(std::optional<int> status) {
  if (!status || !WIFSIGNALED(*status)) return {FaultKind::crashed};
  if (WTERMSIG(*status) == SIGXCPU) return {FaultKind::limit, LimitName::seconds};
  if (WTERMSIG(*status) == SIGSYS) return {FaultKind::forbidden};
  if (WTERMSIG(*status) == SIGXFSZ) return {FaultKind::limit, LimitName::decodedBytes};
  return {FaultKind::crashed};
}

Fault faultOfSilence(const DecoderProcess& worker) {
  constexpr std::chrono::milliseconds kSoon(500);
  return faultOfEnd(worker.end(std::chrono::steady_clock::now() + kSoon));
}

}  // namespace ostra
