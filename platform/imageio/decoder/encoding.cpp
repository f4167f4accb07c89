#include "platform/imageio/decoder/encoding.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <new>

#include <sys/wait.h>
#include <unistd.h>

#include "platform/foundation/error.h"
#include "platform/imageio/decoder/address_space.h"
#include "platform/imageio/decoder/messages.h"
#include "platform/imageio/decoder/next_answer.h"
#include "platform/imageio/decoder/shared_pixels.h"
#include "platform/imageio/decoder/standstill.h"

namespace ostra {
namespace {

UniqueFd inMemoryFile(ByteView bytes) {
  UniqueFd file = makePixelFile();
  while (!bytes.empty()) {
    const ssize_t count = write(file.get(), bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) throw std::bad_alloc();
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
  return file;
}

std::uint32_t rowOf(const Codec& codec) { return static_cast<std::uint32_t>(&codec - allCodecs().data()); }

/// No format needs twice the samples; metadata goes into a file at most a few times.
std::size_t mostEncodedBytes(const DecoderTask& task, ByteView request) {
  return 2 * task.fileSize + 8 * request.size() + (1u << 20);
}

/// What is told is no answer of an encoder: whoever tries again with less to write would leave out what could
/// have been written.
[[noreturn]] void failToReach() { throw NSError(std::string(NSPOSIXErrorDomain), EIO); }

/// How a worker ended that was heard no more. Only a signal ends it for what a library did, and not the one
/// by which a machine that is short of memory ends a process.
Fault faultOfEnding(const DecoderProcess& worker) {
  constexpr std::chrono::milliseconds kSoon(500);
  const auto status = worker.end(std::chrono::steady_clock::now() + kSoon);
  if (!status || !WIFSIGNALED(*status) || WTERMSIG(*status) == SIGKILL) failToReach();
  return faultOfEnd(status);
}

Answer<Bytes> encodeOnce(const Zygote& zygote, const Codec& codec, const Pixels& pixels,
                         const Properties* properties) {
  const UniqueFd samples = inMemoryFile(pixels.bytes.view);
  const UniqueFd unused = makePixelFile();
  const DecoderTask task{.limits = {}, .fileSize = pixels.bytes.view.size(), .encodes = rowOf(codec)};
  const auto worker = zygote.decoderFor(samples.get(), unused.get(), task);
  if (!worker) failToReach();
  EncodingRequest request{pixels.layout, pixels.profile, std::nullopt};
  if (properties != nullptr) request.properties = *properties;
  const Bytes message = messageOf(request);
  const std::chrono::seconds time = allowEncoding(worker->id, pixels.layout, task.fileSize);
  if (!worker->channel.send(message)) return faultOfEnding(*worker);
  const auto deadline = std::chrono::steady_clock::now() + time;
  if (!waitWhileItWorks(*worker, deadline)) return Fault{FaultKind::limit, LimitName::seconds};
  const Channel::Received received = worker->channel.receive(mostEncodedBytes(task, message), deadline);
  if (received.silence == Channel::Silence::late) return Fault{FaultKind::limit, LimitName::seconds};
  if (received.silence == Channel::Silence::closed) return faultOfEnding(*worker);
  return encodedOf(received.message).value_or(Fault{FaultKind::crashed});
}

}  // namespace

Answer<Bytes> encodeApart(const Zygote& zygote, const Codec& codec, const Pixels& pixels,
                          const Properties* properties) {
  Answer<Bytes> answer = encodeOnce(zygote, codec, pixels, properties);
  const auto* fault = std::get_if<Fault>(&answer);
  if (fault == nullptr || fault->kind == FaultKind::limit) return answer;
  return encodeOnce(zygote, codec, pixels, properties);
}

}  // namespace ostra
