#include <utility>

#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/codecs/tga.h"
#include "platform/imageio/codecs/tga_decode.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

class TgaReader : public CodecReader {
 public:
  TgaReader(FileBytes file, TgaPicture picture) : file_(file), picture_(std::move(picture)) {
    const TgaHeader& header = picture_.header;
    opened_ = {.type = "com.truevision.tga-image",
               .count = 1,
               .width = header.width,
               .height = header.height,
               .bits = 8,
               .components = static_cast<std::uint8_t>((picture_.isGray() ? 1 : 3) + (hasAlpha() ? 1 : 0))};
  }

  const Opened& opened() const override { return opened_; }

  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    return decodeTgaPixels(picture_, limits, file_.size());
  }

  Answer<Properties> properties(std::uint32_t index, const Limits&) override {
    if (index != 0) return Fault{FaultKind::damaged};
    const TgaHeader& header = picture_.header;
    PictureFacts facts;
    facts.width = header.width;
    facts.height = header.height;
    facts.depth = header.kind == TgaKind::rgb && header.bits < 24 ? 5 : 8;
    facts.model = picture_.isGray() ? CGColorSpaceModel::monochrome : CGColorSpaceModel::rgb;
    facts.hasAlpha = hasAlpha();
    facts.isIndexed = header.kind == TgaKind::map;
    Dictionary tree = pictureTree(facts, Untagged{});
    Dictionary group;
    group.emplace(kTgaCompression, header.isPacked ? 1 : 0);
    tree.emplace(kCGImagePropertyTGADictionary, std::move(group));
    return readMetadata(Carrier{}, std::move(tree));
  }

 private:
  bool hasAlpha() const { return picture_.header.alpha != TgaAlpha::none; }

  FileBytes file_;
  TgaPicture picture_;
  Opened opened_;
};

}  // namespace

bool matchesTga(FileBytes head) { return readTgaHeader(head).has_value(); }

Answer<std::unique_ptr<CodecReader>> openTga(FileBytes file, const Limits&) {
  const auto header = readTgaHeader(file);
  auto picture = header ? takeTgaApart(file, withTgaExtension(*header, file)) : std::nullopt;
  if (!picture) return Fault{FaultKind::damaged};
  return std::make_unique<TgaReader>(file, std::move(*picture));
}

}  // namespace ostra
