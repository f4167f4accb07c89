#include "platform/imageio/modules/tiff/tiff_writer.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "platform/imageio/codecs/written_profile.h"
#include "platform/imageio/metadata/exif_block.h"
#include "platform/imageio/metadata/exif_tags.h"
#include "platform/imageio/modules/tiff/tiff.h"
#include "platform/imageio/modules/tiff/tiff_written_fields.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

std::uint16_t askedCompression(const Properties* properties) {
  if (properties == nullptr) return 0;
  const Dictionary& group = groupOf(properties->tree, kCGImagePropertyTIFFDictionary);
  const auto found = group.find("Compression");
  const auto* number = found == group.end() ? nullptr : found->second.get<std::int64_t>();
  return number != nullptr && *number > 0 && *number <= UINT16_MAX ? static_cast<std::uint16_t>(*number)
                                                                   : std::uint16_t{0};
}

/// What a file is made of.
struct Parts {
  const Pixels& pixels;
  TiffPacking packing;
  MetadataBlocks blocks;
  Bytes profile;
  std::optional<ExifStructure> exif;
  std::optional<Density> density;
  TiffStrips strips;
};

/// The Exif block, whose offsets are then those of the file, or room for a header. All of it stays, whatever
/// points at it; the header is laid over its own.
Bytes beginning(const Parts& parts) {
  constexpr std::size_t kLongestHeader = 16;
  const Layout& layout = parts.pixels.layout;
  const std::uint64_t packed =
      std::uint64_t{layout.width} * layout.height * parts.packing.samples() * (layout.bitsPerComponent / 8u);
  Bytes file;
  // Costs addresses only, while a file that grows is held twice each time it moves.
  try {
    file.reserve(packed + packed / 500 + parts.blocks.exif.size() + parts.blocks.xmp.size() +
                 parts.profile.size() + (1u << 16));
  } catch (const std::exception&) {
    file.clear();
  }
  file.assign(parts.blocks.exif.begin(), parts.blocks.exif.end());
  file.resize(std::max((file.size() + 1) & ~std::size_t{1}, kLongestHeader));
  return file;
}

void finish(Bytes& file, const Parts& parts, ByteOrder order, bool big) {
  TiffLayout layout(file, order, big);
  auto fields = tiffStorageFields(layout, parts.pixels.layout, parts.packing, parts.strips);
  const auto add = [&](std::vector<TiffField> more) {
    fields.insert(fields.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
  };
  add(tiffBlockFields(layout, parts.blocks, parts.profile));
  if (parts.exif) add(tiffExifFields(layout, *parts.exif));
  if (parts.density) add(tiffDensityFields(layout, *parts.density));
  layout.writeHeader(layout.layDown(std::move(fields)));
}

/// Nothing when the metadata or the profile cannot be written.
std::optional<Parts> partsOf(const Pixels& pixels, const Properties* properties) {
  auto profile = writtenProfile(pixels.profile, pixels.layout.model);
  if (!profile) return std::nullopt;
  Parts parts{pixels, {}, {}, std::move(*profile), {}, {}, {}};
  if (properties != nullptr) {
    auto blocks = writeMetadata(*properties, {pixels.layout.width, pixels.layout.height});
    if (!blocks) return std::nullopt;
    parts.blocks = std::move(*blocks);
    parts.exif = parseExif(parts.blocks.exif);
    if (!parts.exif && !parts.blocks.exif.empty()) return std::nullopt;
    const bool told = parts.exif && (parts.exif->ifds.front().find(kXResolutionTag) != nullptr ||
                                     parts.exif->ifds.front().find(kYResolutionTag) != nullptr);
    if (!told) parts.density = statedDensity(properties->tree);
  }
  parts.packing = tiffPacking(pixels, askedCompression(properties));
  return parts;
}

}  // namespace

Answer<Bytes> writeTiff(const Pixels& pixels, const Properties* properties, std::uint64_t mostClassic) {
  auto parts = partsOf(pixels, properties);
  if (!parts) return Fault{FaultKind::damaged};
  const ByteOrder order = parts->exif ? parts->exif->order : ByteOrder::little;
  Bytes file = beginning(*parts);
  auto strips = appendTiffStrips(file, pixels, parts->packing, order == ByteOrder::big);
  if (!strips) return Fault{FaultKind::damaged};
  parts->strips = std::move(*strips);
  const std::size_t end = file.size();
  finish(file, *parts, order, false);
  if (file.size() > mostClassic) {
    file.resize(end);
    finish(file, *parts, order, true);
  }
  return file;
}

Answer<Bytes> encodeTiff(const Pixels& pixels, const Properties* properties) {
  return writeTiff(pixels, properties, UINT32_MAX);
}

}  // namespace ostra
