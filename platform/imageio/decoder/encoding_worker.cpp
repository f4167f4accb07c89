#include <limits>
#include <memory>

#include <unistd.h>

#include "platform/imageio/codec.h"
#include "platform/imageio/decoder/messages.h"
#include "platform/imageio/decoder/worker.h"
#include "platform/imageio/decoder/worker_process.h"
#include "platform/imageio/likeness.h"
#include "platform/imageio/within_memory.h"

namespace ostra {
namespace {

constexpr int kNotAsked = 4;
/// However little of the file a flat picture takes, it is no stranger's.
constexpr Limits kOwnPicture{.compressionRatio = std::numeric_limits<std::uint64_t>::max()};

/// Libraries of video formats have been seen to write another picture, or none, and to say nothing of it,
/// when they lacked memory in the middle. What is to replace the only copy of a picture is read again before.
bool readsAgainAs(const Pixels& pixels, const Bytes& file, const CodecFunctions& functions) {
  const auto reader = functions.open(file, kOwnPicture);
  const auto* opened = std::get_if<std::unique_ptr<CodecReader>>(&reader);
  if (opened == nullptr) return false;
  const auto decoded = (*opened)->decode(0, kOwnPicture);
  const auto* again = std::get_if<Pixels>(&decoded);
  return again != nullptr && areAlike(pixels, *again);
}

Answer<Bytes> encode(const DecoderTask& task, EncodingRequest request) {
  const CodecFunctions* const functions = functionsOf(allCodecs()[*task.encodes]);
  if (functions == nullptr || functions->encode == nullptr) return Fault{FaultKind::missing};
  const Pixels pixels{request.layout, SharedBytes{nullptr, mapInput(task)}, std::move(request.profile)};
  auto answer = functions->encode(pixels, request.properties ? &*request.properties : nullptr);
  const auto* file = std::get_if<Bytes>(&answer);
  if (file != nullptr && !readsAgainAs(pixels, *file, *functions)) return Fault{FaultKind::damaged};
  return answer;
}

}  // namespace

void serveEncoding(const DecoderTask& task, const Confinement& confinement) {
  beConfined(task, confinement);
  const Channel parent((UniqueFd(kChannelDescriptor)));
  const Channel::Received received = parent.receive(kMostRequestBytes);
  auto request = requestOf(received.message);
  if (received.silence != Channel::Silence::none || !request) _exit(kNotAsked);
  tell(parent, messageOf(withinMemory([&] { return encode(task, std::move(*request)); })));
  _exit(kServed);
}

}  // namespace ostra
