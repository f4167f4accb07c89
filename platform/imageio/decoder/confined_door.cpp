#include "platform/imageio/decoder/confined_door.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

#include "platform/imageio/codec.h"
#include "platform/imageio/decoder/address_space.h"
#include "platform/imageio/decoder/believed_pixels.h"
#include "platform/imageio/decoder/encoding.h"
#include "platform/imageio/decoder/messages.h"
#include "platform/imageio/decoder/next_answer.h"
#include "platform/imageio/decoder/shared_pixels.h"
#include "platform/imageio/refused_reader.h"
#include "platform/imageio/within_memory.h"

namespace ostra {
namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;

constexpr std::size_t kMostOpenedBytes = 4096;

/// Metadata is parsed text beside its raw blocks: the message is larger than what was read.
std::size_t mostPropertyBytes(const Limits& limits) { return 8 * limits.metadataBytes; }
std::size_t mostPixelsMessageBytes(const Limits& limits) { return limits.profileBytes + kMostOpenedBytes; }

class ConfinedReader : public Reader {
 public:
  ConfinedReader(DecoderProcess decoder, UniqueFd pixelFile, Opened opened, const DecoderTask& task)
      : decoder_(std::move(decoder)),
        pixelFile_(std::move(pixelFile)),
        opened_(std::move(opened)),
        task_(task) {}

  const Opened& opened() const override { return opened_; }
  Answer<Pixels> decode(std::uint32_t index) override {
    serve(index);
    if (index != served_) return Fault{FaultKind::damaged};
    if (std::holds_alternative<Fault>(pixels_)) return pixels_;
    return std::exchange(pixels_, Fault{FaultKind::damaged});
  }
  Answer<Properties> properties(std::uint32_t index) override {
    serve(index);
    return index == served_ ? properties_ : Fault{FaultKind::damaged};
  }

 private:
  /// The second phase, once: properties, pixels, the end.
  void serve(std::uint32_t index) {
    if (served_) return;
    served_ = index;
    properties_ = withinMemory([&] { return readProperties(index); });
    // Pixels without what is told of them would be written without it.
    if (const auto* fault = std::get_if<Fault>(&properties_)) {
      pixels_ = *fault;
    } else {
      pixels_ = withinMemory([&] { return readPixels(); });
    }
    decoder_ = DecoderProcess();
    pixelFile_ = UniqueFd();
  }

  Answer<Properties> readProperties(std::uint32_t index) {
    deadline_ = steady_clock::now() + seconds(task_.limits.seconds);
    const std::uint8_t* bytes = reinterpret_cast<const std::uint8_t*>(&index);
    if (!allowDecoding(decoder_.id, opened_, task_.limits, task_.fileSize) ||
        !decoder_.channel.send({bytes, sizeof index})) {
      return faultOfSilence(decoder_);
    }
    return nextAnswer<Properties>(decoder_, mostPropertyBytes(task_.limits), deadline_, propertiesOf);
  }

  Answer<Pixels> readPixels() {
    auto answer =
        nextAnswer<DecodedPixels>(decoder_, mostPixelsMessageBytes(task_.limits), deadline_, pixelsOf);
    if (const auto* fault = std::get_if<Fault>(&answer)) return *fault;
    const auto status = decoder_.end(deadline_);
    if (!status) return Fault{FaultKind::limit, LimitName::seconds};
    if (*status != kServed) return faultOfEnd(status);
    return believedPixels(std::get<DecodedPixels>(std::move(answer)), opened_, pixelFile_.get());
  }

  DecoderProcess decoder_;
  UniqueFd pixelFile_;
  const Opened opened_;
  const DecoderTask task_;
  Channel::Deadline deadline_;
  std::optional<std::uint32_t> served_;
  Answer<Properties> properties_ = Fault{};
  Answer<Pixels> pixels_ = Fault{};
};

Answer<std::unique_ptr<Reader>> openFile(const Zygote& zygote, const UniqueFd& file, const Limits& limits) {
  const auto size = sizeOf(file.get());
  if (!size) return Fault{FaultKind::notImage};
  if (*size > limits.decodedBytes) return Fault{FaultKind::limit, LimitName::decodedBytes};
  const DecoderTask task{limits, *size};
  UniqueFd pixelFile = makePixelFile();
  auto decoder = zygote.decoderFor(file.get(), pixelFile.get(), task);
  if (!decoder) return Fault{FaultKind::crashed};

  const auto deadline = steady_clock::now() + seconds(std::min(kOpeningSeconds, limits.seconds));
  auto opened = nextAnswer<Opened>(*decoder, kMostOpenedBytes, deadline, openedOf);
  if (const auto* fault = std::get_if<Fault>(&opened)) return *fault;
  return std::make_unique<ConfinedReader>(std::move(*decoder), std::move(pixelFile),
                                          std::get<Opened>(std::move(opened)), task);
}

}  // namespace

Answer<std::unique_ptr<Reader>> ConfinedDoor::open(UniqueFd file, const Limits& limits) {
  auto answer = withinMemory([&]() -> Answer<std::unique_ptr<Reader>> {
    try {
      return openFile(zygote_, file, limits);
    } catch (const std::system_error&) {  // no descriptor left for a socket or a memory file
      return Fault{FaultKind::crashed};
    }
  });
  const auto* fault = std::get_if<Fault>(&answer);
  return fault == nullptr ? std::move(answer) : refusedAtOpening(file.get(), *fault);
}

Answer<Bytes> ConfinedDoor::encode(std::string_view type, const Pixels& pixels,
                                   const Properties* properties) {
  const Codec* codec = codecForType(type);
  if (codec == nullptr || codec->module.empty())
    return CodecDoor::standard().encode(type, pixels, properties);
  return withinMemory([&] { return encodeApart(zygote_, *codec, pixels, properties); });
}

std::set<std::string> ConfinedDoor::writable() const { return CodecDoor::standard().writable(); }

}  // namespace ostra
