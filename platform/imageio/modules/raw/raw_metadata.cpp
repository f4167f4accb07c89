#include "platform/imageio/modules/raw/raw_metadata.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <ctime>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/jpeg_segments.h"
#include "platform/imageio/metadata/exif_block.h"
#include "platform/imageio/metadata/exif_extract.h"
#include "platform/imageio/metadata/text_encoding.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

Bytes limited(ByteView bytes, const Limits& limits) {
  if (bytes.size() > limits.metadataBytes) throw LimitExceeded{LimitName::metadataBytes};
  return Bytes(bytes.begin(), bytes.end());
}

Bytes exifOfTiff(ByteView file, const Limits& limits) {
  const auto structure = TiffStructure::open(file);
  return structure ? exifBlockOfTiff(*structure, structure->first(), limits.metadataBytes) : Bytes();
}

/// Leaves the entries of the first directory without a value whose tags are the maker's own: at these numbers
/// Panasonic tells of raw pixels and keeps its preview.
void dropOwnTags(Bytes& file, ByteOrder order) {
  constexpr std::uint16_t kFirstOfTiff = 254;
  const std::size_t position = read32(file, 4, order);
  if (position > file.size() || file.size() - position < 2) return;
  const std::size_t count = read16(file, position, order);
  if (12 * count > file.size() - position - 2) return;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = position + 2 + 12 * i;
    if (read16(file, at, order) < kFirstOfTiff) write16(file, at + 2, 0, order);
  }
}

// Olympus and Panasonic put marks of their own where TIFF has 42.
Bytes exifOfDirectories(FileBytes file, const RawContainer& container, const Limits& limits) {
  if (container.kind == RawKind::tiff || container.kind == RawKind::cr2) return exifOfTiff(file, limits);
  if (file.size() < 8) return {};
  Bytes usual(file.begin(), file.end());
  const ByteOrder order = usual[0] == 'M' ? ByteOrder::big : ByteOrder::little;
  write16(usual, 2, 42, order);
  dropOwnTags(usual, order);
  return exifOfTiff(usual, limits);
}

/// A preview is a JPEG of its own.
void readFujifilm(FileBytes file, const Limits& limits, Carrier& carrier) {
  constexpr std::size_t kPreview = 84;
  if (file.size() < kPreview + 8) return;
  const std::size_t offset = bigEndian32(file, kPreview), size = bigEndian32(file, kPreview + 4);
  if (size > file.size() || offset > file.size() - size) return;
  JpegSegments segments = readJpegSegments(file.subspan(offset, size), limits);
  if (segments.exceeded != LimitName::none) throw LimitExceeded{segments.exceeded};
  carrier.exif = std::move(segments.exif);
  carrier.xmp = std::move(segments.xmp);
}

/// The head is a row of blocks, each of a name, a length and that many bytes.
void readMinolta(FileBytes file, const Limits& limits, Carrier& carrier) {
  if (file.size() < 8) return;
  const std::size_t end = std::min<std::size_t>(file.size(), std::size_t{8} + bigEndian32(file, 4));
  for (std::size_t at = 8; at + 8 <= end;) {
    const std::size_t size = bigEndian32(file, at + 4);
    if (size > end - at - 8) return;
    const ByteView content = file.subspan(at + 8, size);
    if (asText(file.subspan(at, 4)) == std::string_view("\0TTW", 4))
      carrier.exif = exifOfTiff(content, limits);
    at += 8 + size;
  }
}

void addText(Dictionary& group, const char* key, const char* text) {
  if (*text != 0) group.emplace(key, utf8FromUnknown(text));
}

void addPositive(Dictionary& group, const char* key, double number) {
  if (std::isfinite(number) && number > 0) group.emplace(key, number);
}

Dictionary tiffGroup(const RawLibrary& library) {
  const libraw_data_t& data = library->imgdata;
  Dictionary group;
  addText(group, "Make", data.idata.make);
  addText(group, "Model", data.idata.model);
  addText(group, "Software", data.idata.software);
  addText(group, "Artist", data.other.artist);
  addText(group, "ImageDescription", data.other.desc);
  group.emplace(kCGImagePropertyOrientation, library.orientation());
  return group;
}

Dictionary exifGroup(const RawLibrary& library) {
  constexpr double kMostIso = 65535;
  const libraw_data_t& data = library->imgdata;
  Dictionary group;
  addPositive(group, "ExposureTime", data.other.shutter);
  addPositive(group, "FNumber", data.other.aperture);
  addPositive(group, "FocalLength", data.other.focal_len);
  const double iso = data.other.iso_speed;
  if (iso >= 1 && iso <= kMostIso)
    group.emplace("ISOSpeedRatings", Array{Value(std::int64_t{std::lround(iso)})});
  addText(group, "LensMake", data.lens.LensMake);
  addText(group, "LensModel", data.lens.Lens);
  // A time of day without a zone, which the library took for one of this machine's.
  std::tm time{};
  if (data.other.timestamp > 0 && localtime_r(&data.other.timestamp, &time) != nullptr) {
    std::array<char, 20> text{};
    if (std::strftime(text.data(), text.size(), "%Y:%m:%d %H:%M:%S", &time) != 0)
      group.emplace("DateTimeOriginal", text.data());
  }
  return group;
}

Bytes exifOfLibrary(const RawLibrary& library) {
  Dictionary tree;
  tree.emplace(kCGImagePropertyTIFFDictionary, tiffGroup(library));
  tree.emplace(kCGImagePropertyExifDictionary, exifGroup(library));
  return patchExif({}, {}, tree, {}).value_or(Bytes{});
}

}  // namespace

Carrier readRawBlocks(FileBytes file, const RawContainer& container, const RawLibrary& library,
                      const Limits& limits) {
  Carrier carrier;
  if (container.hasDirectories()) {
    carrier.exif = limited(exifOfDirectories(file, container, limits), limits);
    carrier.xmp = limited(container.directories.xmp, limits);
  }
  if (container.kind == RawKind::raf) readFujifilm(file, limits, carrier);
  if (container.kind == RawKind::mrw) readMinolta(file, limits, carrier);
  if (carrier.exif.empty()) carrier.exif = exifOfLibrary(library);
  return carrier;
}

}  // namespace ostra
