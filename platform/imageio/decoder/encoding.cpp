#include "platform/imageio/decoder/encoding.h"

#include <cerrno>
#include <chrono>
#include <new>

#include <unistd.h>

#include "platform/imageio/decoder/address_space.h"
#include "platform/imageio/decoder/messages.h"
#include "platform/imageio/decoder/next_answer.h"
#include "platform/imageio/decoder/shared_pixels.h"

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

}  // namespace

Answer<Bytes> encodeApart(const Zygote& zygote, const Codec& codec, const Pixels& pixels,
                          const Properties* properties) {
  const UniqueFd samples = inMemoryFile(pixels.bytes.view);
  const UniqueFd unused = makePixelFile();
  const DecoderTask task{.limits = {}, .fileSize = pixels.bytes.view.size(), .encodes = rowOf(codec)};
  const auto worker = zygote.decoderFor(samples.get(), unused.get(), task);
  if (!worker) return Fault{FaultKind::crashed};
  EncodingRequest request{pixels.layout, pixels.profile, std::nullopt};
  if (properties != nullptr) request.properties = *properties;
  const Bytes message = messageOf(request);
  const std::chrono::seconds time = allowEncoding(worker->id, pixels.layout, task.fileSize);
  if (!worker->channel.send(message)) return faultOfSilence(*worker);
  return nextAnswer<Bytes>(*worker, mostEncodedBytes(task, message), std::chrono::steady_clock::now() + time,
                           encodedOf);
}

}  // namespace ostra
