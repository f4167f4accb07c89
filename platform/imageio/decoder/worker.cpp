#include "platform/imageio/decoder/worker.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include <unistd.h>

#include "platform/foundation/service.h"
#include "platform/graphics/profile_trial.h"
#include "platform/imageio/codec.h"
#include "platform/imageio/decoder/channel.h"
#include "platform/imageio/decoder/messages.h"
#include "platform/imageio/decoder/shared_pixels.h"
#include "platform/imageio/decoder/worker_process.h"
#include "platform/imageio/within_memory.h"

namespace ostra {
namespace {

Answer<std::unique_ptr<CodecReader>> openInput(const DecoderTask& task) {
  return openWithCodec(mapInput(task), task.limits);
}

Answer<DecodedPixels> decode(CodecReader& reader, std::uint32_t index, const Limits& limits,
                             const SharedPixels& memory) {
  auto answer = reader.decode(index, limits);
  if (const auto* fault = std::get_if<Fault>(&answer)) return *fault;
  auto& pixels = std::get<Pixels>(answer);
  const auto offset = memory.offsetOf(pixels.bytes.view);
  if (!offset) return Fault{FaultKind::crashed};
  if (const auto* profile = std::get_if<IccProfile>(&pixels.profile))
    Service<ProfileTrial>::current().run(profile->bytes);
  return DecodedPixels{pixels.layout, std::move(pixels.profile), *offset, pixels.bytes.view.size()};
}

std::uint32_t askedIndex(const Channel& parent) {
  std::uint32_t index = 0;
  const Channel::Received received = parent.receive(sizeof index);
  if (received.silence != Channel::Silence::none || received.message.size() != sizeof index) _exit(kServed);
  std::memcpy(&index, received.message.data(), sizeof index);
  return index;
}

}  // namespace

void serveTask(const DecoderTask& task, const Confinement& confinement) {
  if (task.encodes) serveEncoding(task, confinement);
  serveFile(task, confinement);
}

void serveFile(const DecoderTask& task, const Confinement& confinement) {
  beConfined(task, confinement);
  SharedPixels memory(kPixelsDescriptor);
  const Service<PixelStore>::Override pixelsAreShared(memory);
  const Channel parent((UniqueFd(kChannelDescriptor)));

  auto opening = withinMemory([&] { return openInput(task); });
  if (const auto* fault = std::get_if<Fault>(&opening)) {
    tell(parent, messageOf(Answer<Opened>(*fault)));
    _exit(kServed);
  }
  CodecReader& reader = *std::get<std::unique_ptr<CodecReader>>(opening);
  tell(parent, messageOf(Answer<Opened>(reader.opened())));

  const std::uint32_t index = askedIndex(parent);
  const auto properties = withinMemory([&] { return reader.properties(index, task.limits); });
  tell(parent, messageOf(properties));
  if (std::holds_alternative<Fault>(properties)) _exit(kServed);
  tell(parent, messageOf(withinMemory([&] { return decode(reader, index, task.limits, memory); })));
  _exit(kServed);
}

}  // namespace ostra
