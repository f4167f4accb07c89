#include <memory>

#include <unistd.h>

#include "platform/imageio/codec.h"
#include "platform/imageio/decoder/messages.h"
#include "platform/imageio/decoder/worker.h"
#include "platform/imageio/decoder/worker_process.h"
#include "platform/imageio/within_memory.h"

namespace ostra {
namespace {

constexpr int kNotAsked = 4;

Answer<Bytes> encode(const DecoderTask& task, EncodingRequest request) {
  const CodecFunctions* const functions = functionsOf(allCodecs()[*task.encodes]);
  if (functions == nullptr || functions->encode == nullptr) return Fault{FaultKind::missing};
  const Pixels pixels{request.layout, SharedBytes{nullptr, mapInput(task)}, std::move(request.profile)};
  return functions->encode(pixels, request.properties ? &*request.properties : nullptr);
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
