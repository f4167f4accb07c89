#include "platform/imageio/modules/tiff/tiff_pages.h"

#include <algorithm>
#include <array>
#include <set>

namespace ostra {
namespace {

constexpr std::uint16_t kKind = 254, kOldKind = 255, kCompression = 259, kPhotometry = 262, kBelow = 330,
                        kDngVersion = 50706;

bool isPage(const TiffStructure& file, const TiffEntries& directory) {
  constexpr std::uint64_t kSmaller = 1, kMask = 4, kOldSmaller = 2;
  if (const auto kind = file.numberOf(directory.find(kKind))) return (*kind & (kSmaller | kMask)) == 0;
  return file.numberOf(directory.find(kOldKind)) != kOldSmaller;
}

bool holdsSensorData(const TiffStructure& file, const TiffEntries& directory) {
  constexpr std::uint64_t kColourFilter = 32803, kLinearRaw = 34892;
  // Those of Kodak, Sony, Nikon and Pentax.
  constexpr std::array<std::uint64_t, 5> kOfCameras = {262, 32767, 34713, 65000, 65535};
  const std::uint64_t photometry = file.numberOf(directory.find(kPhotometry)).value_or(0);
  if (photometry == kColourFilter || photometry == kLinearRaw) return true;
  const auto compression = file.numberOf(directory.find(kCompression));
  return compression && std::find(kOfCameras.begin(), kOfCameras.end(), *compression) != kOfCameras.end();
}

bool holdsSensorDataBelow(const TiffStructure& file, const TiffEntries& directory) {
  constexpr std::uint64_t kMostBelow = 16;
  const TiffEntry* const below = directory.find(kBelow);
  for (std::uint64_t i = 0; below != nullptr && i < std::min(below->count, kMostBelow); ++i) {
    const auto offset = file.numberOf(below, i);
    const auto other = offset ? file.directoryAt(*offset) : std::nullopt;
    if (other && holdsSensorData(file, *other)) return true;
  }
  return false;
}

/// Calls `see` with each directory of the chain and its offset as long as it returns true.
template <class See>
void walk(const TiffStructure& file, See see) {
  std::set<std::uint64_t> seen;
  for (std::uint64_t offset = file.first(); offset != 0 && seen.insert(offset).second;) {
    const auto directory = file.directoryAt(offset);
    if (!directory || !see(*directory, offset)) return;
    offset = directory->next;
  }
}

}  // namespace

std::optional<TiffPages> readTiffPages(const TiffStructure& file, std::uint32_t most) {
  if (!file.directoryAt(file.first())) return std::nullopt;
  TiffPages pages{0, file.first()};
  // Copies are no frames, but walking past them is work too.
  std::uint32_t walked = 0;
  walk(file, [&](const TiffEntries& directory, std::uint64_t offset) {
    if (isPage(file, directory) && ++pages.count == 1) pages.picture = offset;
    return pages.count < most && ++walked < 2 * most;
  });
  pages.count = std::max(pages.count, 1u);
  return pages;
}

bool isCameraRaw(const TiffStructure& file) {
  constexpr std::uint32_t kMostWalked = 8;
  const ByteView bytes = file.file();
  if (bytes.size() > 10 && bytes[8] == 'C' && bytes[9] == 'R') return true;  // Canon's mark
  bool found = false;
  std::uint32_t walked = 0;
  walk(file, [&](const TiffEntries& directory, std::uint64_t) {
    found = directory.find(kDngVersion) != nullptr || holdsSensorData(file, directory) ||
            holdsSensorDataBelow(file, directory);
    return !found && ++walked < kMostWalked;
  });
  return found;
}

}  // namespace ostra
