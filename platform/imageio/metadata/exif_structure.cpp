#include "platform/imageio/metadata/exif_structure.h"

#include <algorithm>

#include "platform/imageio/limits.h"

namespace ostra {

namespace {

constexpr std::size_t kHeaderSize = 8;
/// More directories in the chain than any writer makes; the rest is not looked at.
constexpr std::size_t kLongestChain = 8;
/// Ten times as many as there are tags; edits look at every pair of entries at worst.
constexpr std::size_t kMostEntries = 4096;

std::optional<ByteOrder> orderOf(ByteView block) {
  if (block.size() < kHeaderSize) return std::nullopt;
  const ByteOrder order = block[0] == 'M' ? ByteOrder::big : ByteOrder::little;
  const bool marked = (block[0] == 'I' || block[0] == 'M') && block[1] == block[0];
  if (!marked || read16(block, 2, order) != 42) return std::nullopt;
  return order;
}

std::optional<ByteRange> valueOf(ByteView block, const ExifEntry& entry, ByteOrder order) {
  const auto size = checkedProduct(sizeOfType(entry.type), entry.count);
  if (!size || *size == 0) return std::nullopt;
  if (*size <= 4) return ByteRange{entry.position + 8, static_cast<std::size_t>(*size)};
  const std::size_t offset = read32(block, entry.position + 8, order);
  if (offset > block.size() || *size > block.size() - offset) return std::nullopt;
  return ByteRange{offset, static_cast<std::size_t>(*size)};
}

std::optional<Ifd> readIfd(ByteView block, ByteOrder order, IfdKind kind, std::size_t position) {
  if (position < kHeaderSize || position > block.size() || block.size() - position < 2) return std::nullopt;
  const std::size_t count = read16(block, position, order);
  const std::size_t room = block.size() - position - 2;
  if (count > kMostEntries || count * 12 > room) return std::nullopt;
  Ifd ifd{.kind = kind, .position = position, .entries = {}, .hasNext = room - count * 12 >= 4};
  ifd.entries.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    ExifEntry entry;
    entry.position = position + 2 + 12 * i;
    entry.tag = read16(block, entry.position, order);
    entry.type = read16(block, entry.position + 2, order);
    entry.count = read32(block, entry.position + 4, order);
    entry.value = valueOf(block, entry, order);
    ifd.entries.push_back(entry);
  }
  return ifd;
}

/// The offset that a pointer entry holds; nothing when there is no such entry or it is no pointer.
std::optional<std::size_t> pointer(ByteView block, ByteOrder order, const Ifd& ifd, std::uint16_t tag) {
  const ExifEntry* entry = ifd.find(tag);
  if (!entry || (entry->type != kLong && entry->type != kIfd) || entry->count != 1) return std::nullopt;
  return read32(block, entry->position + 8, order);
}

/// Whether an edit of the directory would change another one. Thumbnails are not asked: they go first.
bool crossesAny(const ExifStructure& structure, const Ifd& ifd) {
  return std::any_of(structure.ifds.begin(), structure.ifds.end(), [&](const Ifd& other) {
    return other.kind != IfdKind::thumbnail && overlap(other.range(), ifd.range());
  });
}

/// False when the directory is pointed at but cannot be trusted.
bool follow(ByteView block, ExifStructure& structure, IfdKind kind, std::uint16_t tag) {
  const auto position = pointer(block, structure.order, structure.ifds.front(), tag);
  if (!position) return true;
  auto ifd = readIfd(block, structure.order, kind, *position);
  if (!ifd) return false;
  if (crossesAny(structure, *ifd)) return false;
  structure.ifds.push_back(std::move(*ifd));
  return true;
}

void followInterop(ByteView block, ExifStructure& structure) {
  const Ifd* exif = structure.find(IfdKind::exif);
  if (!exif) return;
  const auto position = pointer(block, structure.order, *exif, kInteropPointer);
  if (!position) return;
  auto ifd = readIfd(block, structure.order, IfdKind::interop, *position);
  if (!ifd || crossesAny(structure, *ifd)) return;
  structure.ifds.push_back(std::move(*ifd));
}

/// False when the chain comes back to a directory that was read before.
bool followChain(ByteView block, ExifStructure& structure) {
  Ifd last = structure.ifds.front();
  for (std::size_t i = 0; i < kLongestChain && last.hasNext; ++i) {
    const std::size_t next = read32(block, last.range().end() - 4, structure.order);
    if (next == 0) return true;
    for (const Ifd& known : structure.ifds) {
      if (known.position == next) return false;
    }
    auto ifd = readIfd(block, structure.order, IfdKind::thumbnail, next);
    if (!ifd) return true;
    last = *ifd;
    structure.ifds.push_back(std::move(*ifd));
  }
  return true;
}

}  // namespace

std::uint16_t read16(ByteView bytes, std::size_t at, ByteOrder order) {
  const unsigned a = bytes[at], b = bytes[at + 1];
  return static_cast<std::uint16_t>(order == ByteOrder::big ? a << 8 | b : b << 8 | a);
}

std::uint32_t read32(ByteView bytes, std::size_t at, ByteOrder order) {
  const std::uint32_t a = read16(bytes, at, order), b = read16(bytes, at + 2, order);
  return order == ByteOrder::big ? a << 16 | b : b << 16 | a;
}

void write16(Bytes& bytes, std::size_t at, std::uint16_t value, ByteOrder order) {
  const auto high = static_cast<std::uint8_t>(value >> 8), low = static_cast<std::uint8_t>(value & 0xFF);
  bytes[at] = order == ByteOrder::big ? high : low;
  bytes[at + 1] = order == ByteOrder::big ? low : high;
}

void write32(Bytes& bytes, std::size_t at, std::uint32_t value, ByteOrder order) {
  const auto high = static_cast<std::uint16_t>(value >> 16), low = static_cast<std::uint16_t>(value & 0xFFFF);
  write16(bytes, at, order == ByteOrder::big ? high : low, order);
  write16(bytes, at + 2, order == ByteOrder::big ? low : high, order);
}

bool overlap(const ByteRange& a, const ByteRange& b) { return a.offset < b.end() && b.offset < a.end(); }

std::size_t sizeOfType(std::uint16_t type) {
  switch (type) {
    case kByte:
    case kAscii:
    case kSignedByte:
    case kUndefined:
    case kUtf8:
      return 1;
    case kShort:
    case kSignedShort:
      return 2;
    case kLong:
    case kSignedLong:
    case kFloat:
    case kIfd:
      return 4;
    case kRational:
    case kSignedRational:
    case kDouble:
      return 8;
    default:
      return 0;
  }
}

const ExifEntry* Ifd::find(std::uint16_t tag) const {
  const auto entry =
      std::find_if(entries.begin(), entries.end(), [&](const ExifEntry& e) { return e.tag == tag; });
  return entry == entries.end() ? nullptr : &*entry;
}

const Ifd* ExifStructure::find(IfdKind kind) const {
  const auto ifd = std::find_if(ifds.begin(), ifds.end(), [&](const Ifd& i) { return i.kind == kind; });
  return ifd == ifds.end() ? nullptr : &*ifd;
}

std::vector<ByteRange> ExifStructure::liveRanges() const {
  std::vector<ByteRange> ranges{{0, kHeaderSize}};
  for (const Ifd& ifd : ifds) {
    ranges.push_back(ifd.range());
    for (const ExifEntry& entry : ifd.entries) {
      if (entry.outOfLine()) ranges.push_back(*entry.value);
    }
  }
  return ranges;
}

std::optional<ExifStructure> parseExif(ByteView block) {
  const auto order = orderOf(block);
  if (!order) return std::nullopt;
  auto tiff = readIfd(block, *order, IfdKind::tiff, read32(block, 4, *order));
  if (!tiff) return std::nullopt;
  ExifStructure structure{.order = *order, .ifds = {}};
  structure.ifds.push_back(std::move(*tiff));
  if (!follow(block, structure, IfdKind::exif, kExifPointer)) return std::nullopt;
  if (!follow(block, structure, IfdKind::gps, kGpsPointer)) return std::nullopt;
  if (!followChain(block, structure)) return std::nullopt;
  followInterop(block, structure);
  return structure;
}

}  // namespace ostra
