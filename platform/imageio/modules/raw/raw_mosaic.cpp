#include "platform/imageio/modules/raw/raw_mosaic.h"

#include <algorithm>

#include "platform/imageio/metadata/exif_structure.h"

namespace ostra {
namespace {

// TIFF/EP's pattern and size of its repetition; Kodak's pattern.
constexpr std::uint16_t kPattern = 33422, kRepetition = 33421, kKodakPattern = 64777;
constexpr std::uint8_t kCells = 36, kSide = 6;
constexpr std::size_t kEntry = 12;

bool isSixBySix(FileBytes file, std::size_t entry, ByteOrder order) {
  constexpr std::uint16_t kShort = 3;
  return read16(file, entry, order) == kRepetition && read16(file, entry + 2, order) == kShort &&
         read32(file, entry + 4, order) == 2 && read16(file, entry + 8, order) == kSide &&
         read16(file, entry + 10, order) == kSide;
}

bool isBoundless(FileBytes file, std::size_t entry, ByteOrder order) {
  if (file.size() - entry < kEntry || read32(file, entry + 4, order) != kCells) return false;
  const std::uint16_t tag = read16(file, entry, order);
  if (tag != kPattern && tag != kKodakPattern) return false;
  return entry < kEntry || !isSixBySix(file, entry - kEntry, order);
}

}  // namespace

bool hasBoundlessMosaic(FileBytes file) {
  // Where the one byte of the count that is not zero stands in an entry.
  constexpr std::size_t kLowFirst = 4, kLowLast = 7;
  for (auto at = file.begin(); (at = std::find(at, file.end(), kCells)) != file.end(); ++at) {
    const auto position = static_cast<std::size_t>(at - file.begin());
    if (position >= kLowFirst && isBoundless(file, position - kLowFirst, ByteOrder::little)) return true;
    if (position >= kLowLast && isBoundless(file, position - kLowLast, ByteOrder::big)) return true;
  }
  return false;
}

}  // namespace ostra
