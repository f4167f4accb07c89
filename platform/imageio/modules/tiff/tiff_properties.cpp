#include "platform/imageio/modules/tiff/tiff_properties.h"

#include <algorithm>

#include "platform/imageio/codecs/exif_colour.h"
#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/exif_extract.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/profile_space.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

Bytes bytesField(const TiffFile& file, std::uint32_t tag, std::size_t most, LimitName limit) {
  std::uint32_t count = 0;
  const std::uint8_t* data = nullptr;
  if (TIFFGetField(file.get(), tag, &count, &data) == 0 || data == nullptr) return {};
  if (count > most) throw LimitExceeded{limit};
  return {data, data + count};
}

/// IPTC records are often typed as words, in the order of the file, which the library then turns.
Bytes iptcField(const TiffFile& file, std::size_t most) {
  const TIFFField* const field = TIFFFieldWithTag(file.get(), TIFFTAG_RICHTIFFIPTC);
  std::uint32_t count = 0;
  const std::uint8_t* data = nullptr;
  if (field == nullptr || TIFFGetField(file.get(), TIFFTAG_RICHTIFFIPTC, &count, &data) == 0 ||
      data == nullptr)
    return {};
  const bool words = TIFFFieldDataType(field) == TIFF_LONG;
  const std::size_t size = std::size_t{count} * (words ? 4 : 1);
  if (size > most) throw LimitExceeded{LimitName::metadataBytes};
  Bytes bytes(data, data + size);
  if (words && TIFFIsByteSwapped(file.get()) != 0)
    for (std::size_t i = 0; i + 4 <= size; i += 4)
      std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(i),
                   bytes.begin() + static_cast<std::ptrdiff_t>(i + 4));
  return bytes;
}

Bytes limitedExif(const TiffFile& file, const Limits& limits) {
  Bytes exif = exifBlockOfTiff(file.bytes());
  if (exif.size() > limits.metadataBytes) throw LimitExceeded{LimitName::metadataBytes};
  return exif;
}

void addDensity(const TiffFile& file, Dictionary& tree) {
  constexpr double kCentimetresAnInch = 2.54;
  const auto unit = file.field<std::uint16_t>(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  const double factor = unit == RESUNIT_INCH ? 1 : unit == RESUNIT_CENTIMETER ? kCentimetresAnInch : 0;
  const double x = file.field<float>(TIFFTAG_XRESOLUTION) * factor,
               y = file.field<float>(TIFFTAG_YRESOLUTION) * factor;
  if (!(x > 0) || !(y > 0)) return;
  tree.emplace(kCGImagePropertyDPIWidth, x);
  tree.emplace(kCGImagePropertyDPIHeight, y);
}

}  // namespace

ProfileRecord readTiffProfile(const TiffFile& file, const TiffDirectory& directory, const Limits& limits) {
  Bytes icc = bytesField(file, TIFFTAG_ICCPROFILE, limits.profileBytes, LimitName::profileBytes);
  ProfileRecord profile = Untagged{};
  if (!icc.empty()) profile = IccProfile{std::move(icc)};
  if (statedSpace(profile, directory.model()) != nullptr) return profile;
  return exifColour(limitedExif(file, limits));
}

Properties readTiffProperties(const TiffFile& file, const TiffDirectory& directory, const Limits& limits) {
  PictureFacts facts;
  facts.width = directory.width;
  facts.height = directory.height;
  facts.depth = directory.bits;
  facts.model = directory.model();
  facts.hasAlpha = directory.alpha != TiffAlpha::none;
  facts.isIndexed = directory.colour == TiffColour::palette;
  Dictionary tree = pictureTree(facts, readTiffProfile(file, directory, limits));
  addDensity(file, tree);
  Carrier carrier;
  carrier.exif = limitedExif(file, limits);
  carrier.xmp = bytesField(file, TIFFTAG_XMLPACKET, limits.metadataBytes, LimitName::metadataBytes);
  PhotoshopBlock photoshop =
      splitPhotoshop(bytesField(file, TIFFTAG_PHOTOSHOP, limits.metadataBytes, LimitName::metadataBytes));
  carrier.iptc = iptcField(file, limits.metadataBytes);
  if (carrier.iptc.empty()) carrier.iptc = std::move(photoshop.iptc);
  carrier.photoshopResources = std::move(photoshop.resources);
  return readMetadata(std::move(carrier), std::move(tree));
}

}  // namespace ostra
