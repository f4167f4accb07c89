// Photoshop documents (Adobe Photoshop File Formats Specification, 2019): big-endian; a header, then palette,
// image resources, layers and the merged picture, each section with its length before it. Resources hold
// density (1005), IPTC (1028), the profile (1039), Exif (1058) and XMP (1060). A document is one picture.
#include <utility>

#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/codecs/psd.h"
#include "platform/imageio/codecs/psd_decode.h"
#include "platform/imageio/codecs/psd_structure.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/metadata/text_encoding.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

constexpr std::uint16_t kExif = 1058, kXmp = 1060;

Bytes resource(const PsdStructure& psd, std::uint16_t number) {
  const ByteView bytes = findPhotoshopResource(psd.resources, number);
  return Bytes(bytes.begin(), bytes.end());
}

Carrier carrierOf(const PsdStructure& psd) {
  Carrier carrier;
  carrier.exif = resource(psd, kExif);
  carrier.xmp = resource(psd, kXmp);
  PhotoshopBlock block = splitPhotoshop(psd.resources);
  carrier.iptc = std::move(block.iptc);
  carrier.photoshopResources = resourcesOutsideDocuments(block.resources);
  return carrier;
}

class PsdReader : public CodecReader {
 public:
  PsdReader(FileBytes file, PsdStructure psd) : file_(file), psd_(psd) {
    const unsigned colours = psd.mode == PsdMode::indexed ? 3 : psd.colours();
    opened_ = {"com.adobe.photoshop-image",
               1,
               psd.width,
               psd.height,
               static_cast<std::uint8_t>(psd.bits),
               static_cast<std::uint8_t>(colours + (psd.hasAlpha() ? 1 : 0))};
  }

  const Opened& opened() const override { return opened_; }

  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    return decodePsdPixels(psd_, file_.size(), limits);
  }

  Answer<Properties> properties(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    if (psd_.resources.size() > limits.metadataBytes)
      return Fault{FaultKind::limit, LimitName::metadataBytes};
    PictureFacts facts;
    facts.width = psd_.width;
    facts.height = psd_.height;
    facts.depth = psd_.bits;
    facts.model = psd_.model();
    facts.hasAlpha = psd_.hasAlpha();
    facts.isIndexed = psd_.mode == PsdMode::indexed;
    Dictionary tree = pictureTree(facts, readPsdColour(psd_, limits));
    // The document's own density stands above what Exif repeats of it.
    if (const auto density = photoshopDensity(psd_.resources)) {
      tree.emplace(kCGImagePropertyDPIWidth, density->x);
      tree.emplace(kCGImagePropertyDPIHeight, density->y);
    }
    if (psd_.bits == 32) tree.emplace(kCGImagePropertyIsFloat, true);
    if (psd_.mode == PsdMode::lab)
      tree.insert_or_assign(std::string(kCGImagePropertyColorModel), Value("Lab"));
    return readMetadata(carrierOf(psd_), std::move(tree));
  }

 private:
  FileBytes file_;
  PsdStructure psd_;
  Opened opened_;
};

}  // namespace

bool matchesPsd(FileBytes head) { return asText(head).starts_with("8BPS"); }

Answer<std::unique_ptr<CodecReader>> openPsd(FileBytes file, const Limits&) {
  const auto psd = readPsdStructure(file);
  if (!psd) return Fault{FaultKind::damaged};
  return std::make_unique<PsdReader>(file, *psd);
}

}  // namespace ostra
