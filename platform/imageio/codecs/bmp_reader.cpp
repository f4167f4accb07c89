#include <algorithm>
#include <utility>

#include "platform/imageio/codecs/bmp.h"
#include "platform/imageio/codecs/bmp_colour.h"
#include "platform/imageio/codecs/bmp_decode.h"
#include "platform/imageio/codecs/dots_a_metre.h"
#include "platform/imageio/codecs/little_endian.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

constexpr std::size_t kFileHeader = 14;

class BmpReader : public CodecReader {
 public:
  BmpReader(FileBytes file, BmpPicture picture) : file_(file), picture_(std::move(picture)) {
    const BmpHeader& header = picture_.header;
    opened_ = {.type = "com.microsoft.bmp",
               .count = 1,
               .width = header.width,
               .height = header.height,
               .bits = static_cast<std::uint8_t>(picture_.decodedBits()),
               .components = static_cast<std::uint8_t>(picture_.hasGrayPalette() ? 1
                                                       : header.hasAlpha()       ? 4
                                                                                 : 3)};
  }

  const Opened& opened() const override { return opened_; }

  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    const auto [model, profile] = colour(limits);
    auto answer = decodeBmpPixels(picture_, model, limits, file_.size());
    if (auto* pixels = std::get_if<Pixels>(&answer)) pixels->profile = profile;
    return answer;
  }

  Answer<Properties> properties(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    const BmpHeader& header = picture_.header;
    const auto [model, profile] = colour(limits);
    PictureFacts facts;
    facts.width = header.width;
    facts.height = header.height;
    facts.depth = picture_.storedBits();
    facts.model = model;
    facts.hasAlpha = header.hasAlpha();
    facts.isIndexed = header.hasPalette();
    Dictionary tree = pictureTree(facts, profile);
    if (header.xDensity != 0 && header.yDensity != 0) {
      tree.emplace(kCGImagePropertyDPIWidth, inchesFromMetres(header.xDensity));
      tree.emplace(kCGImagePropertyDPIHeight, inchesFromMetres(header.yDensity));
    }
    return readMetadata(Carrier{}, std::move(tree));
  }

 private:
  // A palette of grays is a gray picture, unless a profile says what its colours are.
  std::pair<CGColorSpaceModel, ProfileRecord> colour(const Limits& limits) const {
    const ByteView bitmap = file_.subspan(kFileHeader);
    const auto as = [&](CGColorSpaceModel model) {
      return std::pair(model, readBmpColour(bitmap, picture_.header, model, limits));
    };
    auto rgb = as(CGColorSpaceModel::rgb);
    const bool profiled =
        std::holds_alternative<IccProfile>(rgb.second) || std::holds_alternative<Calibrated>(rgb.second);
    return picture_.hasGrayPalette() && !profiled ? as(CGColorSpaceModel::monochrome) : rgb;
  }

  FileBytes file_;
  BmpPicture picture_;
  Opened opened_;
};

}  // namespace

bool matchesBmp(FileBytes head) {
  return head.size() >= kFileHeader + 4 && head[0] == 'B' && head[1] == 'M' &&
         isBmpHeaderSize(littleEndian32(head, kFileHeader));
}

Answer<std::unique_ptr<CodecReader>> openBmp(FileBytes file, const Limits&) {
  if (file.size() < kFileHeader) return Fault{FaultKind::damaged};
  const ByteView bitmap = file.subspan(kFileHeader);
  const auto header = readBmpHeader(bitmap);
  if (!header) return Fault{FaultKind::damaged};
  BmpPicture picture{*header, {}, {}};
  // The pixels follow the palette where the file does not say where they are.
  const std::size_t said = littleEndian32(file, 10);
  if (said != 0 && said < kFileHeader + header->paletteAt) return Fault{FaultKind::damaged};
  const std::size_t colours =
      said == 0 ? header->paletteAt + header->paletteEntries * header->paletteEntryBytes : said - kFileHeader;
  picture.palette = readBmpPalette(bitmap, *header, colours);
  picture.data = bitmap.subspan(std::min(colours, bitmap.size()));
  return std::make_unique<BmpReader>(file, std::move(picture));
}

}  // namespace ostra
