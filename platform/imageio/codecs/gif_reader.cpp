// GIF87a and GIF89a (CompuServe, 1987 and 1990): little-endian; "GIF87a" or "GIF89a", the logical screen and
// its palette, then blocks up to a trailer. Each image block is a picture. Comments lie in extensions; XMP
// and ICC profiles in application extensions that Adobe and the ICC defined. There is no place for Exif,
// IPTC, density or orientation.
#include <utility>

#include "platform/imageio/codecs/gif.h"
#include "platform/imageio/codecs/gif_blocks.h"
#include "platform/imageio/codecs/gif_decode.h"
#include "platform/imageio/codecs/gif_properties.h"
#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {
namespace {

class GifReader : public CodecReader {
 public:
  GifReader(FileBytes file, const GifStructure& structure) : file_(file), structure_(structure) {
    opened_ = {"com.compuserve.gif",
               structure.frames,
               structure.width,
               structure.height,
               8,
               static_cast<std::uint8_t>(structure.hasAlpha() ? 4 : 3)};
  }

  const Opened& opened() const override { return opened_; }

  // Of an animation only the first frame is decoded.
  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    auto answer = decodeGifPixels(structure_, file_.size(), limits);
    if (auto* pixels = std::get_if<Pixels>(&answer))
      pixels->profile = readGifColour(file_, structure_, limits);
    return answer;
  }
  Answer<Properties> properties(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    return readGifProperties(file_, structure_, limits);
  }

 private:
  FileBytes file_;
  GifStructure structure_;
  Opened opened_;
};

}  // namespace

bool matchesGif(FileBytes head) {
  const std::string_view text = asText(head);
  return text.starts_with("GIF87a") || text.starts_with("GIF89a");
}

Answer<std::unique_ptr<CodecReader>> openGif(FileBytes file, const Limits& limits) {
  const auto structure = readGifStructure(file, limits.frames);
  if (!structure) return Fault{FaultKind::damaged};
  return std::make_unique<GifReader>(file, *structure);
}

}  // namespace ostra
