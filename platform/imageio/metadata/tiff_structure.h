#pragma once
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/foundation/bytes.h"
#include "platform/imageio/metadata/exif_structure.h"

namespace ostra {

/// One entry of a directory of a TIFF file.
struct TiffEntry {
  std::uint16_t tag = 0;
  std::uint16_t type = 0;
  std::uint64_t count = 0;
  /// Where the value lies, within the entry or outside it; nothing when its type is unknown, it is empty or
  /// leaves the file.
  std::optional<ByteRange> value;
};

struct TiffEntries {
  std::vector<TiffEntry> entries;
  std::uint64_t next = 0;  // where the next directory of the chain lies; 0 after the last

  /// The first entry of a tag, or null.
  const TiffEntry* find(std::uint16_t tag) const;
};

/// The directories of a TIFF file (TIFF 6.0) or of a BigTIFF: any of them, wherever it lies. An Exif block,
/// of which every part has a meaning, is read by `parseExif`.
class TiffStructure {
 public:
  /// Nothing when the header is not one. The file must outlive it.
  static std::optional<TiffStructure> open(ByteView file);

  ByteView file() const { return file_; }
  ByteOrder order() const { return order_; }
  std::uint64_t first() const { return first_; }
  /// Nothing when there is no directory, or one of more entries than any writer makes.
  std::optional<TiffEntries> directoryAt(std::uint64_t offset) const;

  ByteView bytesOf(const TiffEntry& entry) const;
  /// A whole number without a sign, or a pointer; nothing when the entry has no such one.
  std::optional<std::uint64_t> numberOf(const TiffEntry* entry, std::uint64_t index = 0) const;

 private:
  explicit TiffStructure(ByteView file) : file_(file) {}
  std::uint64_t number(std::uint64_t at, unsigned size) const;
  TiffEntry entryAt(std::uint64_t at) const;

  ByteView file_;
  ByteOrder order_ = ByteOrder::little;
  bool big_ = false;
  std::uint64_t first_ = 0;
};

/// Types that only BigTIFF has, 8 bytes each.
enum TiffLongType : std::uint16_t { kLong8 = 16, kSignedLong8 = 17, kIfd8 = 18 };

}  // namespace ostra
