#include "platform/imageio/codecs/jpeg_segments.h"
#include "platform/imageio/metadata/exif_structure.h"
#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {
namespace {

constexpr std::size_t kEntryBytes = 16;
constexpr std::uint16_t kEntriesTag = 0xB002;

// The value of the tag that lists the pictures, or nothing.
ByteView pictureEntries(ByteView index, ByteOrder order) {
  const std::size_t directory = read32(index, 4, order);
  if (directory > index.size() || index.size() - directory < 2) return {};
  const std::size_t count = read16(index, directory, order);
  if (count * 12 > index.size() - directory - 2) return {};
  for (std::size_t at = directory + 2; at < directory + 2 + count * 12; at += 12) {
    if (read16(index, at, order) != kEntriesTag) continue;
    const std::size_t size = read32(index, at + 4, order), offset = read32(index, at + 8, order);
    if (offset > index.size() || size > index.size() - offset) return {};
    return index.subspan(offset, size);
  }
  return {};
}

}  // namespace

std::uint32_t countJpegViews(ByteView index) {
  if (index.size() < 8) return 1;
  const ByteOrder order = asText(index.first(2)) == "II" ? ByteOrder::little : ByteOrder::big;
  const ByteView entries = pictureEntries(index, order);
  std::uint32_t views = 1;
  // The first entry is the picture that the index stands in.
  for (std::size_t at = kEntryBytes; at + kEntryBytes <= entries.size(); at += kEntryBytes) {
    const std::uint32_t type = read32(entries, at, order) & 0xFFFFFF;
    if (type >> 16 == 2) ++views;
  }
  return views;
}

}  // namespace ostra
