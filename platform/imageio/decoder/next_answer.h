#pragma once
#include <optional>

#include "platform/imageio/codec_door.h"
#include "platform/imageio/decoder/zygote.h"

namespace ostra {

/// How the end of a worker counts that should have said more; its status as `waitpid` tells it.
Fault faultOfEnd(std::optional<int> status);
/// Why a worker cannot be talked to any more. Its end is told soon, unless it is the talking that failed.
Fault faultOfSilence(const DecoderProcess& worker);

/// The next answer of a worker, or the fault that stands for its silence.
template <class T>
Answer<T> nextAnswer(const DecoderProcess& worker, std::size_t most, Channel::Deadline deadline,
                     std::optional<Answer<T>> (*read)(ByteView)) {
  const Channel::Received received = worker.channel.receive(most, deadline);
  if (received.silence == Channel::Silence::late) return Fault{FaultKind::limit, LimitName::seconds};
  if (received.silence == Channel::Silence::closed) return faultOfSilence(worker);
  auto answer = read(received.message);
  if (!answer) return Fault{FaultKind::crashed};
  return std::move(*answer);
}

}  // namespace ostra
