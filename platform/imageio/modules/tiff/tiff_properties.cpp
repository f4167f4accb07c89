#include "platform/imageio/modules/tiff/tiff_properties.h"

#include <algorithm>
#include <string>

#include "platform/imageio/codecs/exif_colour.h"
#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/exif_extract.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/profile_space.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

constexpr std::uint16_t kXmp = 700, kIptc = 33723, kPhotoshop = 34377, kProfile = 34675;

/// The bytes of an entry's value, as they lie in the file whatever their type.
Bytes blockOf(const TiffPicture& picture, std::uint16_t tag, std::size_t most, LimitName limit) {
  const TiffEntry* const entry = picture.entries.find(tag);
  if (entry == nullptr) return {};
  const ByteView bytes = picture.structure.bytesOf(*entry);
  if (bytes.size() > most) throw LimitExceeded{limit};
  return {bytes.begin(), bytes.end()};
}

/// Writers that call the records words may have turned each into the order of the file.
Bytes iptcOf(const TiffPicture& picture, std::size_t most) {
  constexpr std::uint8_t kMark = 0x1C;
  Bytes records = blockOf(picture, kIptc, most, LimitName::metadataBytes);
  if (records.size() < 4 || records[0] == kMark || records[3] != kMark) return records;
  for (std::size_t i = 0; i + 4 <= records.size(); i += 4)
    std::reverse(records.begin() + static_cast<std::ptrdiff_t>(i),
                 records.begin() + static_cast<std::ptrdiff_t>(i + 4));
  return records;
}

Bytes exifOf(const TiffPicture& picture, const Limits& limits) {
  return exifBlockOfTiff(picture.structure, picture.offset, limits.metadataBytes);
}

/// What says how the samples are stored, which a writer can take up.
Dictionary storage(const TiffDirectory& directory) {
  Dictionary group;
  group.emplace("Compression", std::int64_t{directory.compression});
  group.emplace("PhotometricInterpretation", std::int64_t{directory.photometry});
  return group;
}

}  // namespace

ProfileRecord readTiffProfile(const TiffPicture& picture, const Limits& limits) {
  const TiffDirectory& directory = picture.directory;
  if (directory.colour == TiffColour::lab) return NamedSpace{std::string(kCGColorSpaceROMMRGB)};
  if (directory.colour == TiffColour::light) return NamedSpace{std::string(kCGColorSpaceSRGB)};
  Bytes icc = blockOf(picture, kProfile, limits.profileBytes, LimitName::profileBytes);
  ProfileRecord profile = Untagged{};
  if (!icc.empty()) profile = IccProfile{std::move(icc)};
  if (statedSpace(profile, directory.model()) != nullptr) return profile;
  // Floating point is light, which is given the curve of this space.
  if (directory.isReal() && directory.model() != CGColorSpaceModel::cmyk)
    return NamedSpace{std::string(kCGColorSpaceSRGB)};
  return exifColour(exifOf(picture, limits));
}

Properties readTiffProperties(const TiffPicture& picture, const Limits& limits) {
  const TiffDirectory& directory = picture.directory;
  PictureFacts facts;
  facts.width = directory.width;
  facts.height = directory.height;
  facts.depth = directory.bits;
  facts.model = directory.model();
  facts.hasAlpha = directory.alpha != TiffAlpha::none && directory.colour != TiffColour::cmyk;
  facts.isIndexed = directory.colour == TiffColour::palette;
  Dictionary tree = pictureTree(facts, readTiffProfile(picture, limits));
  if (directory.isReal()) tree.emplace(kCGImagePropertyIsFloat, true);
  tree.emplace(kCGImagePropertyTIFFDictionary, storage(directory));
  Carrier carrier;
  carrier.exif = exifOf(picture, limits);
  carrier.xmp = blockOf(picture, kXmp, limits.metadataBytes, LimitName::metadataBytes);
  PhotoshopBlock photoshop =
      splitPhotoshop(blockOf(picture, kPhotoshop, limits.metadataBytes, LimitName::metadataBytes));
  carrier.iptc = iptcOf(picture, limits.metadataBytes);
  if (carrier.iptc.empty()) carrier.iptc = std::move(photoshop.iptc);
  carrier.photoshopResources = std::move(photoshop.resources);
  return readMetadata(std::move(carrier), std::move(tree));
}

}  // namespace ostra
