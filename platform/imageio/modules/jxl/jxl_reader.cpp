// JPEG XL (ISO/IEC 18181): a codestream alone, or in boxes with Exif ("Exif", a place in front of the block),
// XMP
// ("xml ") and others, each of which may be packed ("brob"). The profile and the orientation are in the
// codestream; Exif's own orientation counts for nothing. Count: the frames of an animation, of which the
// first is decoded as it is shown.
#include <utility>

#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/metadata/exif_block.h"
#include "platform/imageio/modules/jxl/jxl.h"
#include "platform/imageio/modules/jxl/jxl_boxes.h"
#include "platform/imageio/modules/jxl/jxl_decode.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

// The usual one needs no telling, unless the Exif block tells another.
bool mustTellOrientation(int orientation, ByteView exif) {
  Dictionary told;
  readExif(exif, told);
  return orientation != 1 || told.contains(kCGImagePropertyOrientation);
}

class JxlReader : public CodecReader {
 public:
  JxlReader(FileBytes file, JxlStructure structure) : file_(file), structure_(std::move(structure)) {
    const bool isGray = structure_.model == CGColorSpaceModel::monochrome;
    const bool isInks = structure_.model == CGColorSpaceModel::cmyk;
    opened_ = {"public.jpeg-xl",
               structure_.frames,
               structure_.width,
               structure_.height,
               static_cast<std::uint8_t>(structure_.bits),
               static_cast<std::uint8_t>((isGray   ? 1
                                          : isInks ? 4
                                                   : 3) +
                                         (hasAlpha() ? 1 : 0))};
  }

  const Opened& opened() const override { return opened_; }

  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    return decodeJxl(file_, structure_, limits);
  }

  Answer<Properties> properties(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    PictureFacts facts;
    facts.width = structure_.width;
    facts.height = structure_.height;
    facts.depth = structure_.bits;
    facts.model = structure_.model;
    facts.hasAlpha = hasAlpha();
    Dictionary tree = pictureTree(facts, structure_.profile);
    if (structure_.isFloat) tree.emplace(kCGImagePropertyIsFloat, true);
    Carrier carrier = readJxlBoxes(file_, limits.metadataBytes);
    if (mustTellOrientation(structure_.orientation, carrier.exif))
      tree.emplace(kCGImagePropertyOrientation, std::int64_t{structure_.orientation});
    return readMetadata(std::move(carrier), std::move(tree));
  }

 private:
  bool hasAlpha() const { return structure_.alpha != JxlAlpha::none; }

  FileBytes file_;
  JxlStructure structure_;
  Opened opened_;
};

}  // namespace

Answer<std::unique_ptr<CodecReader>> openJxl(FileBytes file, const Limits& limits) {
  auto structure = readJxlStructure(file, limits);
  if (!structure) return Fault{FaultKind::damaged};
  return std::make_unique<JxlReader>(file, std::move(*structure));
}

}  // namespace ostra
