#include <algorithm>
#include <utility>

#include "platform/imageio/codecs/png.h"
#include "platform/imageio/codecs/png_chunks.h"
#include "platform/imageio/codecs/png_colour.h"
#include "platform/imageio/codecs/png_decode.h"
#include "platform/imageio/codecs/png_properties.h"

namespace ostra {
namespace {

std::uint8_t componentsOf(const PngStructure& structure) {
  return static_cast<std::uint8_t>((structure.header.isGray() ? 1 : 3) + (structure.hasAlpha() ? 1 : 0));
}

class PngReader : public CodecReader {
 public:
  PngReader(FileBytes file, const PngStructure& structure) : file_(file), structure_(structure) {
    const PngHeader& header = structure.header;
    opened_ = {"public.png",
               structure.frames,
               header.width,
               header.height,
               static_cast<std::uint8_t>(header.bits),
               componentsOf(structure)};
  }

  const Opened& opened() const override { return opened_; }

  // Of an animation only the default image is decoded.
  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    auto answer = decodePngPixels(file_, structure_, limits);
    if (auto* pixels = std::get_if<Pixels>(&answer))
      pixels->profile = readPngColour(file_, structure_.header, limits);
    return answer;
  }
  Answer<Properties> properties(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    return readPngProperties(file_, structure_, readPngColour(file_, structure_.header, limits), limits);
  }

 private:
  FileBytes file_;
  PngStructure structure_;
  Opened opened_;
};

}  // namespace

bool matchesPng(FileBytes head) {
  // The signature alone is not a picture yet.
  constexpr std::size_t kMinimum = 10;
  return head.size() >= kMinimum && std::equal(kPngSignature.begin(), kPngSignature.end(), head.begin());
}

Answer<std::unique_ptr<CodecReader>> openPng(FileBytes file, const Limits& limits) {
  const auto structure = readPngStructure(file, limits.frames);
  if (!structure) return Fault{FaultKind::damaged};
  return std::make_unique<PngReader>(file, *structure);
}

}  // namespace ostra
