#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/foundation/bytes.h"

namespace ostra {

enum class ByteOrder { little, big };

std::uint16_t read16(ByteView bytes, std::size_t at, ByteOrder order);
std::uint32_t read32(ByteView bytes, std::size_t at, ByteOrder order);
void write16(Bytes& bytes, std::size_t at, std::uint16_t value, ByteOrder order);
void write32(Bytes& bytes, std::size_t at, std::uint32_t value, ByteOrder order);

struct ByteRange {
  std::size_t offset = 0;
  std::size_t size = 0;
  std::size_t end() const { return offset + size; }
};
bool overlap(const ByteRange& a, const ByteRange& b);

/// The field types of TIFF 6.0 and BigTIFF's IFD, and Exif 3.0's UTF-8.
enum ExifType : std::uint16_t {
  kByte = 1,
  kAscii = 2,
  kShort = 3,
  kLong = 4,
  kRational = 5,
  kSignedByte = 6,
  kUndefined = 7,
  kSignedShort = 8,
  kSignedLong = 9,
  kSignedRational = 10,
  kFloat = 11,
  kDouble = 12,
  kIfd = 13,
  kUtf8 = 129,
};
/// Bytes of one value, 0 for a type that is not known.
std::size_t sizeOfType(std::uint16_t type);

/// Pointers from one directory to another.
inline constexpr std::uint16_t kExifPointer = 0x8769;
inline constexpr std::uint16_t kGpsPointer = 0x8825;
inline constexpr std::uint16_t kInteropPointer = 0xA005;

/// One entry of a directory: 12 bytes at `position`.
struct ExifEntry {
  std::uint16_t tag = 0;
  std::uint16_t type = 0;
  std::uint32_t count = 0;
  std::size_t position = 0;
  /// Where the value lies, within the entry or outside it; nothing when its type is unknown or it leaves the
  /// block.
  std::optional<ByteRange> value;
  bool outOfLine() const { return value && value->size > 4; }
};

enum class IfdKind { tiff, exif, gps, interop, thumbnail };

/// An image file directory: a count, entries, and the offset of the next one, which some writers leave out.
struct Ifd {
  IfdKind kind = IfdKind::tiff;
  std::size_t position = 0;
  std::vector<ExifEntry> entries;
  bool hasNext = false;

  ByteRange range() const { return {position, 2 + 12 * entries.size() + (hasNext ? 4 : 0)}; }
  /// The first entry of a tag, or null.
  const ExifEntry* find(std::uint16_t tag) const;
};

struct ExifStructure {
  ByteOrder order = ByteOrder::little;
  std::vector<Ifd> ifds;

  /// The first directory of a kind, or null.
  const Ifd* find(IfdKind kind) const;
  /// Every byte that something points at: the header, the directories, the values that can be found.
  std::vector<ByteRange> liveRanges() const;
};

/// Reads the directories of an Exif block. Strict about its bones: nothing when the header is not one, when
/// the directory of the picture, of Exif or of GPS leaves the block, when two of these overlap, or when the
/// chain of directories runs in a circle. A thumbnail or interoperability directory that cannot be read, or
/// an interoperability directory across one of the three, is left out.
std::optional<ExifStructure> parseExif(ByteView block);

}  // namespace ostra
