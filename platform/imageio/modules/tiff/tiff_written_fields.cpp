#include "platform/imageio/modules/tiff/tiff_written_fields.h"

#include <utility>

#include "platform/imageio/metadata/exif_tags.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/metadata/rational.h"
#include "platform/imageio/metadata/tiff_storage_tags.h"

namespace ostra {
namespace {

using Fields = std::vector<TiffField>;

/// As the block has it: an entry of a type that nobody knows keeps its four bytes, which is of no use in a
/// BigTIFF.
void add(Fields& fields, const TiffLayout& layout, const ExifEntry& entry) {
  TiffField field{entry.tag, entry.type, entry.count};
  if (entry.outOfLine()) {
    field.place = entry.value;
  } else {
    if (!entry.value && layout.isBig()) return;
    const ByteRange inner = layout.isBig() ? *entry.value : ByteRange{entry.position + 8, 4};
    const ByteView bytes = layout.file().subspan(inner.offset, inner.size);
    field.value.assign(bytes.begin(), bytes.end());
  }
  fields.push_back(std::move(field));
}

/// The pointer to a directory below, laid down anew where the file is another one than the block.
void addBelow(Fields& fields, TiffLayout& layout, const ExifStructure& block, std::uint16_t tag,
              IfdKind kind) {
  const Ifd* const ifd = block.find(kind);
  if (ifd == nullptr) return;
  if (!layout.isBig()) return fields.push_back(layout.places(tag, {ifd->position}));
  Fields inner;
  for (const ExifEntry& entry : ifd->entries) {
    const bool toInterop = kind == IfdKind::exif && entry.tag == kInteropPointer;
    if (!toInterop) add(inner, layout, entry);
  }
  if (kind == IfdKind::exif) addBelow(inner, layout, block, kInteropPointer, IfdKind::interop);
  fields.push_back(layout.places(tag, {layout.layDown(std::move(inner))}));
}

}  // namespace

Fields tiffStorageFields(const TiffLayout& layout, const Layout& pixels, const TiffPacking& packing,
                         const TiffStrips& strips) {
  constexpr std::uint16_t kCmykInks = 1, kStraightAlpha = 2, kTogether = 1;
  const std::uint16_t samples = packing.samples();
  Fields fields;
  fields.push_back(layout.longs(256, {pixels.width}));
  fields.push_back(layout.longs(257, {pixels.height}));
  fields.push_back(layout.shorts(258, std::vector<std::uint16_t>(samples, pixels.bitsPerComponent)));
  fields.push_back(layout.shorts(259, {packing.compression}));
  fields.push_back(layout.shorts(262, {packing.photometry}));
  fields.push_back(layout.places(273, strips.offsets));
  fields.push_back(layout.shorts(277, {samples}));
  fields.push_back(layout.longs(278, {packing.rowsPerStrip}));
  fields.push_back(layout.places(279, strips.sizes));
  fields.push_back(layout.shorts(284, {kTogether}));
  if (packing.predictor != 1) fields.push_back(layout.shorts(317, {packing.predictor}));
  if (packing.colours == 4) fields.push_back(layout.shorts(332, {kCmykInks}));
  if (packing.hasAlpha) fields.push_back(layout.shorts(338, {kStraightAlpha}));
  return fields;
}

Fields tiffExifFields(TiffLayout& layout, const ExifStructure& block) {
  Fields fields;
  for (const ExifEntry& entry : block.ifds.front().entries) {
    const bool pointer = entry.tag == kExifPointer || entry.tag == kGpsPointer;
    if (!pointer && !speaksOfStorage(entry.tag)) add(fields, layout, entry);
  }
  addBelow(fields, layout, block, kExifPointer, IfdKind::exif);
  addBelow(fields, layout, block, kGpsPointer, IfdKind::gps);
  return fields;
}

Fields tiffBlockFields(const TiffLayout& layout, const MetadataBlocks& blocks, ByteView profile) {
  Fields fields;
  const auto add = [&](std::uint16_t tag, std::uint16_t type, ByteView block) {
    if (!block.empty()) fields.push_back(layout.bytes(tag, type, block));
  };
  add(700, kByte, blocks.xmp);
  add(33723, kUndefined, blocks.iptc);
  add(34377, kByte, blocks.photoshopResources);
  add(34675, kUndefined, profile);
  return fields;
}

Fields tiffDensityFields(const TiffLayout& layout, const Density& density) {
  constexpr std::uint16_t kInch = 2;
  Fields fields;
  for (const auto& [tag, dots] : {std::pair(kXResolutionTag, density.x), {kYResolutionTag, density.y}}) {
    const auto rational = rationalFrom(dots, UINT32_MAX);
    if (!rational) return {};
    TiffField field = layout.longs(tag, {static_cast<std::uint32_t>(rational->numerator),
                                         static_cast<std::uint32_t>(rational->denominator)});
    field.type = kRational;
    field.count = 1;
    fields.push_back(std::move(field));
  }
  fields.push_back(layout.shorts(kResolutionUnitTag, {kInch}));
  return fields;
}

}  // namespace ostra
