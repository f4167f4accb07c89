#include "platform/imageio/codecs/bmp_header.h"

#include <algorithm>
#include <cstdlib>

#include "platform/imageio/codecs/little_endian.h"

namespace ostra {
namespace {

constexpr std::uint32_t kCoreHeader = 12, kShortestOs2Header = 16, kInfoHeader = 40, kOs2Header = 64,
                        kVersion4Header = 108, kVersion5Header = 124;
// Headers from Windows 2 and 3 with three and four masks.
constexpr std::uint32_t kHeaderWithMasks = 52, kHeaderWithAlphaMask = 56;

bool isOs2Header(std::uint32_t size) {
  return size != kInfoHeader && size != kHeaderWithMasks && size != kHeaderWithAlphaMask &&
         size <= kOs2Header && size >= kShortestOs2Header;
}

// The field at `at`, or 0 where a short header of OS/2 ends before it.
std::uint32_t field32(ByteView header, std::size_t at) {
  return at + 4 <= header.size() ? littleEndian32(header, at) : 0;
}

BmpPacking packingOf(std::uint32_t compression, unsigned bits, bool os2) {
  const bool deep = bits == 16 || bits == 24 || bits == 32;
  const bool palette = bits == 1 || bits == 2 || bits == 4 || bits == 8;
  switch (compression) {
    case 0:
      return deep ? BmpPacking::masks : palette ? BmpPacking::palette : BmpPacking::unknown;
    case 1:
      return bits == 8 ? BmpPacking::rle8 : BmpPacking::unknown;
    case 2:
      return bits == 4 ? BmpPacking::rle4 : BmpPacking::unknown;
    case 3:
      return !os2 && (bits == 16 || bits == 32) ? BmpPacking::masks : BmpPacking::unknown;
    case 4:
      return os2 && bits == 24 ? BmpPacking::rle24 : BmpPacking::unknown;
    case 6:
      return bits == 16 || bits == 32 ? BmpPacking::masks : BmpPacking::unknown;
    default:
      return BmpPacking::unknown;
  }
}

// The bits of each are to stand together and lie inside the pixel.
bool masksMakeSense(const std::array<std::uint32_t, 4>& masks, unsigned bits) {
  return std::all_of(masks.begin(), masks.end(), [bits](std::uint32_t mask) {
    if (mask == 0) return true;
    const std::uint32_t lowest = mask & (~mask + 1);
    const bool together = (((mask / lowest) + 1) & (mask / lowest)) == 0;
    return together && (bits == 32 || mask >> bits == 0);
  });
}

// Masks stand behind the oldest header of Windows and inside all later ones: in both cases from byte 40 on.
bool readMasks(ByteView bitmap, std::uint32_t compression, BmpHeader& header) {
  if (compression == 0) {
    header.masks = {0xFF0000, 0x00FF00, 0x0000FF, 0};
    if (header.bits == 16) header.masks = {0x7C00, 0x03E0, 0x001F, 0};
    return true;
  }
  const bool behind = header.size == kInfoHeader;
  const std::size_t count = (behind ? compression == 6 : header.size >= kHeaderWithAlphaMask) ? 4 : 3;
  if (bitmap.size() < kInfoHeader + count * 4) return false;
  for (std::size_t i = 0; i < count; ++i) header.masks[i] = littleEndian32(bitmap, kInfoHeader + i * 4);
  if (behind) header.paletteAt += count * 4;
  return masksMakeSense(header.masks, header.bits);
}

std::optional<BmpHeader> readCoreHeader(ByteView bitmap) {
  BmpHeader header;
  header.size = kCoreHeader;
  header.width = littleEndian16(bitmap, 4);
  header.height = littleEndian16(bitmap, 6);
  header.bits = littleEndian16(bitmap, 10);
  header.packing = packingOf(0, header.bits, true);
  header.paletteAt = kCoreHeader;
  header.paletteEntryBytes = 3;
  if (header.hasPalette()) header.paletteEntries = std::size_t{1} << header.bits;
  readMasks(bitmap, 0, header);
  return header;
}

std::optional<BmpHeader> readInfoHeader(ByteView bitmap, std::uint32_t size) {
  const ByteView fields = bitmap.first(size);
  BmpHeader header;
  header.size = size;
  const auto width = static_cast<std::int32_t>(littleEndian32(fields, 4));
  const auto height = static_cast<std::int32_t>(littleEndian32(fields, 8));
  if (width < 0 || height == INT32_MIN) return std::nullopt;
  header.width = static_cast<std::uint32_t>(width);
  header.height = static_cast<std::uint32_t>(std::abs(height));
  header.topDown = height < 0;
  header.bits = littleEndian16(fields, 14);
  const std::uint32_t compression = field32(fields, 16);
  header.packing = packingOf(compression, header.bits, isOs2Header(size));
  header.paletteAt = size;
  if (header.packing == BmpPacking::masks && !readMasks(bitmap, compression, header)) return std::nullopt;
  if (header.hasPalette()) {
    const std::size_t nameable = std::size_t{1} << header.bits, claimed = field32(fields, 32);
    header.paletteEntries = claimed == 0 ? nameable : std::min(claimed, nameable);
  }
  header.xDensity = field32(fields, 24);
  header.yDensity = field32(fields, 28);
  return header;
}

}  // namespace

bool isBmpHeaderSize(std::uint32_t size) {
  return size == kCoreHeader || (size >= kShortestOs2Header && size <= kOs2Header && size % 4 == 0) ||
         size == kVersion4Header || size == kVersion5Header;
}

std::optional<BmpHeader> readBmpHeader(ByteView bitmap) {
  if (bitmap.size() < 4) return std::nullopt;
  const std::uint32_t size = littleEndian32(bitmap, 0);
  if (!isBmpHeaderSize(size) || bitmap.size() < size) return std::nullopt;
  auto header = size == kCoreHeader ? readCoreHeader(bitmap) : readInfoHeader(bitmap, size);
  if (!header || header->width == 0 || header->height == 0) return std::nullopt;
  return header;
}

std::vector<BmpColour> readBmpPalette(ByteView bitmap, const BmpHeader& header, std::size_t end) {
  std::vector<BmpColour> palette;
  end = std::min(end, bitmap.size());
  std::size_t at = header.paletteAt;
  while (palette.size() < header.paletteEntries && at + 3 <= end) {
    palette.push_back({bitmap[at + 2], bitmap[at + 1], bitmap[at]});
    at += header.paletteEntryBytes;
  }
  return palette;
}

}  // namespace ostra
