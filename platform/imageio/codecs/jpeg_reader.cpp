#include <string>
#include <utility>

#include "platform/imageio/codecs/exif_colour.h"
#include "platform/imageio/codecs/jpeg.h"
#include "platform/imageio/codecs/jpeg_decode.h"
#include "platform/imageio/codecs/jpeg_segments.h"
#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/profile_space.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

CGColorSpaceModel modelOf(const JpegFrame& frame) {
  if (frame.components == 1) return CGColorSpaceModel::monochrome;
  return frame.components == 4 ? CGColorSpaceModel::cmyk : CGColorSpaceModel::rgb;
}

// A profile that the pixels cannot have leaves Exif's mark to speak.
ProfileRecord profileOf(const JpegSegments& segments) {
  ProfileRecord profile = Untagged{};
  if (!segments.icc.empty()) profile = IccProfile{segments.icc};
  if (statedSpace(profile, modelOf(*segments.frame)) != nullptr) return profile;
  return exifColour(segments.exif);
}

void addJfif(const JpegSegments& segments, Dictionary& tree) {
  Dictionary group;
  if (segments.frame->progressive) group.emplace("IsProgressive", true);
  if (const auto& jfif = segments.jfif) {
    group.emplace("JFIFVersion",
                  Array{std::int64_t{jfif->majorVersion}, std::int64_t{jfif->minorVersion / 16},
                        std::int64_t{jfif->minorVersion % 16}});
    group.emplace("DensityUnit", std::int64_t{jfif->unit});
    group.emplace("XDensity", std::int64_t{jfif->x});
    group.emplace("YDensity", std::int64_t{jfif->y});
    constexpr double kCentimetresAnInch = 2.54;
    const double factor = jfif->unit == 1 ? 1 : jfif->unit == 2 ? kCentimetresAnInch : 0;
    if (factor > 0 && jfif->x > 0 && jfif->y > 0) {
      tree.emplace(kCGImagePropertyDPIWidth, jfif->x * factor);
      tree.emplace(kCGImagePropertyDPIHeight, jfif->y * factor);
    }
  }
  if (!group.empty()) tree.emplace(kCGImagePropertyJFIFDictionary, std::move(group));
}

class JpegReader : public CodecReader {
 public:
  JpegReader(FileBytes file, JpegSegments segments) : file_(file), segments_(std::move(segments)) {
    const JpegFrame& frame = *segments_.frame;
    opened_ = {"public.jpeg",
               segments_.pictures,
               frame.width,
               frame.height,
               static_cast<std::uint8_t>(frame.bits),
               static_cast<std::uint8_t>(frame.components)};
  }

  const Opened& opened() const override { return opened_; }

  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    auto answer = decodeJpegPixels(file_, *segments_.frame, limits);
    if (auto* pixels = std::get_if<Pixels>(&answer)) pixels->profile = profileOf(segments_);
    return answer;
  }

  Answer<Properties> properties(std::uint32_t index, const Limits&) override {
    if (index != 0) return Fault{FaultKind::damaged};
    if (segments_.exceeded != LimitName::none) return Fault{FaultKind::limit, segments_.exceeded};
    PictureFacts facts;
    facts.width = segments_.frame->width;
    facts.height = segments_.frame->height;
    facts.depth = segments_.frame->bits;
    facts.model = modelOf(*segments_.frame);
    Dictionary tree = pictureTree(facts, profileOf(segments_));
    addJfif(segments_, tree);
    Carrier carrier;
    carrier.exif = segments_.exif;
    carrier.xmp = segments_.xmp;
    carrier.comments = segments_.comments;
    PhotoshopBlock photoshop = splitPhotoshop(segments_.photoshop);
    carrier.iptc = std::move(photoshop.iptc);
    carrier.photoshopResources = std::move(photoshop.resources);
    return readMetadata(std::move(carrier), std::move(tree));
  }

 private:
  FileBytes file_;
  JpegSegments segments_;
  Opened opened_;
};

}  // namespace

bool matchesJpeg(FileBytes head) {
  return head.size() >= 3 && head[0] == 0xFF && head[1] == 0xD8 && head[2] == 0xFF;
}

Answer<std::unique_ptr<CodecReader>> openJpeg(FileBytes file, const Limits& limits) {
  JpegSegments segments = readJpegSegments(file, limits);
  if (!segments.frame) return Fault{FaultKind::damaged};
  return std::make_unique<JpegReader>(file, std::move(segments));
}

}  // namespace ostra
