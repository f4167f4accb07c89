#include "platform/imageio/metadata/carrier.h"

#include <algorithm>

#include "platform/imageio/metadata/exif_block.h"
#include "platform/imageio/metadata/exif_tags.h"
#include "platform/imageio/metadata/iptc.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/metadata/xmp.h"
#include "platform/imageio/property_keys.h"

namespace ostra {

namespace {

constexpr std::string_view kPhotoshopGroup = "{8BIM}";

void raiseDensity(const Bytes& resources, Dictionary& tree) {
  if (statedDensity(tree)) return;
  if (const auto density = photoshopDensity(resources)) {
    tree.emplace(kCGImagePropertyDPIWidth, density->x);
    tree.emplace(kCGImagePropertyDPIHeight, density->y);
  }
}

std::optional<std::int64_t> orientationOf(const Dictionary& tree) {
  const auto found = tree.find(kCGImagePropertyOrientation);
  const auto* number = found == tree.end() ? nullptr : found->second.get<std::int64_t>();
  return number ? std::optional(*number) : std::nullopt;
}

Bytes withTreeOrientation(const Bytes& xmp, const Dictionary& tree) {
  const auto orientation = orientationOf(tree);
  return orientation && !xmp.empty() ? withOrientation(xmp, *orientation) : xmp;
}

bool isExifGroup(std::string_view key) {
  const auto groups = exifGroups();
  return std::any_of(groups.begin(), groups.end(), [&](const ExifGroup& group) { return group.key == key; });
}

/// The carrier less the groups that the tree had when it was read and has no more.
Carrier withoutMissingGroups(Carrier carrier, const Dictionary& tree) {
  for (const std::string_view group :
       {kCGImagePropertyExifDictionary, kCGImagePropertyExifAuxDictionary, kCGImagePropertyGPSDictionary,
        kCGImagePropertyTIFFDictionary, kCGImagePropertyIPTCDictionary, kPhotoshopGroup}) {
    if (carrier.tree.contains(group) && !tree.contains(group)) carrier = carrierWithoutGroup(carrier, group);
  }
  return carrier;
}

}  // namespace

bool Carrier::empty() const {
  return exif.empty() && xmp.empty() && iptc.empty() && photoshopResources.empty() && comments.empty() &&
         texts.empty();
}

Properties readMetadata(Carrier carrier, Dictionary tree) {
  readExif(carrier.exif, tree);
  readIptc(carrier.iptc, tree);
  raiseDensity(carrier.photoshopResources, tree);
  if (!carrier.xmp.empty()) carrier.xmp = withTreeOrientation(withoutPixelProperties(carrier.xmp), tree);
  if (carrier.empty()) return {std::move(tree), nullptr};
  carrier.tree = tree;
  return {std::move(tree), std::make_shared<const Carrier>(std::move(carrier))};
}

std::optional<MetadataBlocks> writeMetadata(const Properties& properties, const WrittenPicture& picture) {
  const Dictionary& tree = properties.tree;
  const Carrier carrier = properties.carrier ? withoutMissingGroups(*properties.carrier, tree) : Carrier();
  MetadataBlocks blocks;
  auto exif = patchExif(carrier.exif, carrier.tree, tree, picture);
  if (!exif) return std::nullopt;
  blocks.exif = std::move(*exif);
  blocks.iptc = patchIptc(carrier.iptc, groupOf(carrier.tree, kCGImagePropertyIPTCDictionary),
                          groupOf(tree, kCGImagePropertyIPTCDictionary));
  blocks.xmp = orientationOf(tree) == orientationOf(carrier.tree) ? carrier.xmp
                                                                  : withTreeOrientation(carrier.xmp, tree);
  const bool iptcUnchanged = properties.carrier && blocks.iptc == properties.carrier->iptc;
  blocks.photoshopResources = patchPhotoshop(carrier.photoshopResources, statedDensity(tree), iptcUnchanged);
  blocks.comments = carrier.comments;
  return blocks;
}

Carrier carrierWithoutGroup(const Carrier& carrier, std::string_view group) {
  Carrier rest = carrier;
  rest.tree.erase(std::string(group));
  // A malformed block stays for the writer to refuse.
  if (!carrier.exif.empty() && isExifGroup(group)) {
    if (auto exif = patchExif(carrier.exif, carrier.tree, rest.tree, {})) rest.exif = std::move(*exif);
  }
  if (!carrier.xmp.empty()) rest.xmp = withoutGroupProperties(carrier.xmp, group);
  if (group == kCGImagePropertyIPTCDictionary) {
    rest.iptc.clear();
    rest.photoshopResources = patchPhotoshop(carrier.photoshopResources, std::nullopt, false);
  }
  if (group == kPhotoshopGroup) rest.photoshopResources.clear();
  return rest;
}

}  // namespace ostra
