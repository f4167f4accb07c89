#include "platform/imageio/metadata/carrier.h"

#include <algorithm>
#include <iterator>

#include "platform/imageio/metadata/exif_block.h"
#include "platform/imageio/metadata/exif_tags.h"
#include "platform/imageio/metadata/iptc.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/metadata/text_homes.h"
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

/// The packet in agreement with the tree and the picture.
Bytes writtenXmp(const Carrier& carrier, const Dictionary& tree, const WrittenPicture& picture) {
  Bytes xmp = withTreeChanges(carrier.xmp, carrier.tree, tree);
  if (xmp.empty()) return xmp;
  if (orientationOf(tree) != orientationOf(carrier.tree)) xmp = withTreeOrientation(xmp, tree);
  return picture.width > 0 && picture.height > 0 ? withPixelSize(xmp, picture.width, picture.height) : xmp;
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
         texts.empty() && pngChunks.empty() && !pixelAspect;
}

Properties readMetadata(Carrier carrier, Dictionary tree) {
  readExif(carrier.exif, tree);
  readIptc(carrier.iptc, tree);
  raiseDensity(carrier.photoshopResources, tree);
  if (!carrier.xmp.empty()) {
    carrier.xmp = withTreeOrientation(withoutPixelProperties(carrier.xmp), tree);
    carrier.toldByXmp = readXmp(carrier.xmp, tree);
  }
  giveTextsAHome(carrier.texts, tree);
  if (carrier.empty()) return {std::move(tree), nullptr};
  carrier.tree = tree;
  return {std::move(tree), std::make_shared<const Carrier>(std::move(carrier))};
}

std::optional<MetadataBlocks> writeMetadata(const Properties& properties, const WrittenPicture& picture) {
  const Dictionary& tree = properties.tree;
  const Carrier carrier = properties.carrier ? withoutMissingGroups(*properties.carrier, tree) : Carrier();
  MetadataBlocks blocks;
  // What texts told alone is new to the blocks; a block that is made anew repeats everything but what the
  // packet tells already.
  const Dictionary told = withoutTexts(carrier.tree, carrier.texts, carrier.toldByXmp);
  auto exif = patchExif(carrier.exif, carrier.exif.empty() ? carrier.toldByXmp : told, tree, picture);
  if (!exif) return std::nullopt;
  blocks.exif = std::move(*exif);
  blocks.iptc = patchIptc(carrier.iptc, groupOf(told, kCGImagePropertyIPTCDictionary),
                          groupOf(tree, kCGImagePropertyIPTCDictionary));
  blocks.xmp = writtenXmp(carrier, tree, picture);
  const bool iptcUnchanged = properties.carrier && blocks.iptc == properties.carrier->iptc;
  blocks.photoshopResources = patchPhotoshop(carrier.photoshopResources, statedDensity(tree), iptcUnchanged);
  // Readers that know both trust the records only as far as their digest does.
  if (!iptcUnchanged && !blocks.iptc.empty())
    blocks.photoshopResources = withIptcDigest(blocks.photoshopResources, blocks.iptc);
  blocks.comments = carrier.comments;
  std::copy_if(carrier.texts.begin(), carrier.texts.end(), std::back_inserter(blocks.texts),
               [&](const CarriedText& text) { return !isAtHome(text, carrier.tree); });
  return blocks;
}

Carrier carrierWithoutGroup(const Carrier& carrier, std::string_view group) {
  Carrier rest = carrier;
  std::erase_if(rest.texts, [&](const CarriedText& text) {
    return hasHomeIn(text, group) && isAtHome(text, carrier.tree);
  });
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
