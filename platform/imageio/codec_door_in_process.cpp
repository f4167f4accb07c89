#include <optional>
#include <utility>

#include "platform/imageio/codec.h"
#include "platform/imageio/codec_door.h"
#include "platform/imageio/file_contents.h"
#include "platform/imageio/refused_reader.h"
#include "platform/imageio/within_memory.h"

namespace ostra {
namespace {

class InProcessReader : public Reader {
 public:
  InProcessReader(SharedBytes file, std::unique_ptr<CodecReader> codec, const Limits& limits)
      : file_(std::move(file)), codec_(std::move(codec)), limits_(limits) {}

  const Opened& opened() const override { return codec_->opened(); }
  Answer<Pixels> decode(std::uint32_t index) override {
    const Answer<Properties> read = properties(index);
    if (const auto* fault = std::get_if<Fault>(&read)) return *fault;
    return withinMemory([&] { return codec_->decode(index, limits_); });
  }
  Answer<Properties> properties(std::uint32_t index) override {
    if (known_ != index) {
      properties_ = withinMemory([&] { return codec_->properties(index, limits_); });
      known_ = index;
    }
    return properties_;
  }

 private:
  SharedBytes file_;
  std::unique_ptr<CodecReader> codec_;
  Limits limits_;
  std::optional<std::uint32_t> known_;  // whose properties have been read
  Answer<Properties> properties_ = Fault{};
};

Answer<std::unique_ptr<Reader>> openFile(const UniqueFd& file, const Limits& limits) {
  if (codecForBytes(readBeginning(file.get(), kSignatureBytes)) == nullptr) return Fault{FaultKind::notImage};
  auto contents = readContents(file.get(), limits.decodedBytes);
  if (const auto* fault = std::get_if<Fault>(&contents)) return *fault;
  auto& bytes = std::get<SharedBytes>(contents);
  auto opened = openWithCodec(bytes.view, limits);
  if (const auto* fault = std::get_if<Fault>(&opened)) return *fault;
  return std::make_unique<InProcessReader>(std::move(bytes),
                                           std::get<std::unique_ptr<CodecReader>>(std::move(opened)), limits);
}

class InProcessDoor : public CodecDoor {
 public:
  Answer<std::unique_ptr<Reader>> open(UniqueFd file, const Limits& limits) override {
    auto answer = withinMemory([&] { return openFile(file, limits); });
    const auto* fault = std::get_if<Fault>(&answer);
    return fault == nullptr ? std::move(answer) : refusedAtOpening(file.get(), *fault);
  }
  Answer<Bytes> encode(std::string_view type, const Pixels& pixels, const Properties* properties) override {
    const Codec* codec = codecForType(type);
    const CodecFunctions* functions = codec == nullptr ? nullptr : functionsOf(*codec);
    if (functions == nullptr || functions->encode == nullptr) return Fault{FaultKind::notImage};
    return withinMemory([&] { return functions->encode(pixels, properties); });
  }
  std::set<std::string> writable() const override {
    std::set<std::string> types;
    for (const Codec& codec : allCodecs()) {
      if (codec.writes && isInstalled(codec)) types.emplace(codec.type);
    }
    return types;
  }
};

}  // namespace

CodecDoor& CodecDoor::standard() {
  static InProcessDoor door;
  return door;
}

}  // namespace ostra
