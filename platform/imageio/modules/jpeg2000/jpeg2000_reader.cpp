// JPEG 2000 (ISO/IEC 15444-1 and -2). The boxes around the codestream are read here, and the library is given
// the codestream alone: it knows less of colours than they tell, and what lies behind the picture must be
// whole too. Count: codestreams, of which the first is decoded.
#include <algorithm>
#include <string>
#include <utility>

#include "platform/imageio/codecs/exif_colour.h"
#include "platform/imageio/codecs/exif_mark.h"
#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/metadata/text_encoding.h"
#include "platform/imageio/modules/jpeg2000/jp2_pixels.h"
#include "platform/imageio/modules/jpeg2000/jpeg2000.h"
#include "platform/imageio/modules/jpeg2000/opj_decode.h"
#include "platform/imageio/pixel_memory.h"
#include "platform/imageio/profile_space.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

/// Takes blocks as long as they are within the limit together.
class Allowance {
 public:
  explicit Allowance(std::size_t most) : left_(most) {}
  Bytes take(ByteView block) {
    if (block.size() > left_) throw LimitExceeded{LimitName::metadataBytes};
    left_ -= block.size();
    return Bytes(block.begin(), block.end());
  }

 private:
  std::size_t left_;
};

// Encoders leave their name; it would be a lie beside the next one's.
bool namesEncoder(std::string_view comment) {
  return comment.starts_with("Created by OpenJPEG") || comment.starts_with("Kakadu-");
}

class Jpeg2000Reader : public CodecReader {
 public:
  Jpeg2000Reader(FileBytes file, Jp2Boxes boxes, Codestream codestream, Jp2Picture picture)
      : file_(file),
        boxes_(std::move(boxes)),
        codestream_(std::move(codestream)),
        picture_(std::move(picture)) {
    opened_ = {"public.jpeg-2000",
               boxes_.codestreams,
               picture_.width,
               picture_.height,
               static_cast<std::uint8_t>(picture_.bits),
               static_cast<std::uint8_t>(picture_.channels.size())};
  }

  const Opened& opened() const override { return opened_; }

  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    const Layout layout = layoutOf(picture_);
    const LimitName limit =
        exceededLimit(limits, layout.width, layout.height, bytesForAPixel(layout), file_.size());
    if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
    const OpjImage image = decodeCodestream(codestream_);
    if (image == nullptr) return Fault{FaultKind::damaged};
    PixelMemory memory(layout.bytesPerRow * layout.height);
    if (!drawJp2(picture_, codestream_, *image, memory.data())) return Fault{FaultKind::damaged};
    return Pixels{layout, std::move(memory).share(), profile()};
  }

  Answer<Properties> properties(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    PictureFacts facts;
    facts.width = picture_.width;
    facts.height = picture_.height;
    facts.depth = picture_.bits;
    facts.model = picture_.space.model;
    facts.hasAlpha = picture_.alpha != Jp2Alpha::none;
    facts.isIndexed = picture_.isIndexed;
    Dictionary tree = pictureTree(facts, profile());
    if (boxes_.density) {
      tree.emplace(kCGImagePropertyDPIWidth, boxes_.density->x);
      tree.emplace(kCGImagePropertyDPIHeight, boxes_.density->y);
    }
    return readMetadata(carrier(limits), std::move(tree));
  }

 private:
  std::uint64_t bytesForAPixel(const Layout& layout) const {
    const std::uint64_t pixels = std::uint64_t{layout.width} * layout.height;
    return layout.bitsPerPixel / 8u + (opjDecodingBytes(codestream_) + pixels - 1) / pixels;
  }

  // Where the file names no space, an Exif block may.
  ProfileRecord profile() const {
    if (!boxes_.colours.empty() || picture_.space.model != CGColorSpaceModel::rgb)
      return picture_.space.profile;
    return exifColour(withoutExifMark(boxes_.exif));
  }

  Carrier carrier(const Limits& limits) const {
    Allowance allowance(limits.metadataBytes);
    Carrier carrier;
    carrier.exif = allowance.take(withoutExifMark(boxes_.exif));
    carrier.xmp = allowance.take(boxes_.xmp);
    PhotoshopBlock block = splitPhotoshop(allowance.take(boxes_.photoshop));
    carrier.photoshopResources = std::move(block.resources);
    carrier.iptc = boxes_.iptc.empty() ? std::move(block.iptc) : allowance.take(boxes_.iptc);
    for (const ByteView comment : codestream_.comments) {
      if (!namesEncoder(asText(comment))) carrier.comments.emplace_back(asText(allowance.take(comment)));
    }
    return carrier;
  }

  FileBytes file_;
  Jp2Boxes boxes_;
  Codestream codestream_;
  Jp2Picture picture_;
  Opened opened_;
};

}  // namespace

Answer<std::unique_ptr<CodecReader>> openJpeg2000(FileBytes file, const Limits& limits) {
  auto boxes = readJp2Boxes(file);
  if (!boxes) return Fault{FaultKind::damaged};
  auto codestream = readCodestream(boxes->codestream);
  if (!codestream) return Fault{FaultKind::damaged};
  auto picture = jp2PictureOf(*boxes, *codestream, limits);
  if (!picture) return Fault{FaultKind::damaged};
  return std::make_unique<Jpeg2000Reader>(file, std::move(*boxes), std::move(*codestream),
                                          std::move(*picture));
}

}  // namespace ostra
