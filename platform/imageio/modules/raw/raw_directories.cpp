#include "platform/imageio/modules/raw/raw_directories.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <set>

namespace ostra {
namespace {

enum Tag : std::uint16_t {
  kCompression = 259,
  kPhotometry = 262,
  kMake = 271,
  kModel = 272,
  kStripOffsets = 273,
  kStripSizes = 279,
  kTileOffsets = 324,
  kTileSizes = 325,
  kSubDirectories = 330,
  kXmp = 700,
  kCanonSlices = 50752,
  kDngVersion = 50706,
};

struct Entry {
  std::uint16_t type = 0;
  std::uint32_t count = 0;
  ByteRange value;
};

class Walk {
 public:
  explicit Walk(FileBytes file)
      : file_(file), order_(!file.empty() && file[0] == 'M' ? ByteOrder::big : ByteOrder::little) {}

  RawDirectories read() {
    // More than any camera writes.
    constexpr std::size_t kMost = 100;
    if (file_.size() >= 8) next_.push_back(read32(file_, 4, order_));
    while (!next_.empty() && seen_.size() < kMost) {
      const std::size_t position = next_.front();
      next_.pop_front();
      if (position != 0 && seen_.insert(position).second) readDirectory(position);
    }
    return std::move(found_);
  }

 private:
  void readDirectory(std::size_t position) {
    if (position > file_.size() || file_.size() - position < 2) return;
    const std::size_t count = read16(file_, position, order_);
    if (12 * count > file_.size() - position - 2) return;
    const bool isFirst = found_.all.empty();
    RawDirectory directory;
    std::vector<std::uint32_t> offsets, sizes;
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t at = position + 2 + 12 * i;
      const auto entry = entryAt(at);
      if (!entry) continue;
      const std::uint16_t tag = read16(file_, at, order_);
      if (isFirst) readAboutFile(tag, *entry);
      switch (tag) {
        case kCompression:
          directory.compression = first(*entry);
          break;
        case kPhotometry:
          directory.photometry = first(*entry);
          break;
        case kCanonSlices:
          directory.hasSlices = true;
          break;
        case kStripOffsets:
        case kTileOffsets:
          offsets = numbers(*entry);
          break;
        case kStripSizes:
        case kTileSizes:
          sizes = numbers(*entry);
          break;
        case kSubDirectories:
          for (const std::uint32_t below : numbers(*entry)) next_.push_back(below);
          break;
        default:
          break;
      }
    }
    for (std::size_t i = 0; i < std::min(offsets.size(), sizes.size()); ++i)
      directory.pieces.push_back({offsets[i], sizes[i]});
    found_.all.push_back(std::move(directory));
    const std::size_t end = position + 2 + 12 * count;
    if (file_.size() - end >= 4) next_.push_back(read32(file_, end, order_));
  }

  void readAboutFile(std::uint16_t tag, const Entry& entry) {
    const ByteView value = file_.subspan(entry.value.offset, entry.value.size);
    if (tag == kMake) found_.make = text(value);
    if (tag == kModel) found_.model = text(value);
    if (tag == kXmp) found_.xmp = value;
    if (tag == kDngVersion) found_.isDng = true;
  }

  /// Nothing for one whose value leaves the file.
  std::optional<Entry> entryAt(std::size_t at) const {
    Entry entry{read16(file_, at + 2, order_), read32(file_, at + 4, order_), {}};
    const auto size = checkedProduct(sizeOfType(entry.type), entry.count);
    if (!size || *size == 0 || *size > file_.size()) return std::nullopt;
    entry.value = {*size <= 4 ? at + 8 : read32(file_, at + 8, order_), *size};
    if (entry.value.offset > file_.size() - entry.value.size) return std::nullopt;
    return entry;
  }

  std::vector<std::uint32_t> numbers(const Entry& entry) const {
    std::vector<std::uint32_t> result;
    const std::size_t step = sizeOfType(entry.type);
    if (step != 2 && step != 4) return result;
    for (std::size_t i = 0; i < entry.count; ++i) {
      const std::size_t at = entry.value.offset + step * i;
      result.push_back(step == 2 ? read16(file_, at, order_) : read32(file_, at, order_));
    }
    return result;
  }
  std::uint32_t first(const Entry& entry) const {
    const auto all = numbers(Entry{entry.type, 1, entry.value});
    return all.empty() ? 0 : all.front();
  }
  static std::string text(ByteView value) {
    return {value.begin(), std::find(value.begin(), value.end(), 0)};
  }

  FileBytes file_;
  ByteOrder order_;
  std::deque<std::size_t> next_;
  std::set<std::size_t> seen_;
  RawDirectories found_;
};

}  // namespace

// TIFF/EP and DNG name a mosaic and linear sensor data; the compressions are makers' own, and nothing but raw
// pixels has them.
bool RawDirectory::isRaw() const {
  constexpr unsigned kMosaic = 32803, kLinear = 34892;
  constexpr unsigned kMakers[] = {32767, 32769, 32770, 34713, 65000, 65535};
  return photometry == kMosaic || photometry == kLinear || hasSlices ||
         std::find(std::begin(kMakers), std::end(kMakers), compression) != std::end(kMakers);
}

bool RawDirectory::fits(FileBytes file) const {
  return std::all_of(pieces.begin(), pieces.end(), [&](const ByteRange& piece) {
    return piece.size <= file.size() && piece.offset <= file.size() - piece.size;
  });
}

RawDirectories readRawDirectories(FileBytes file) { return Walk(file).read(); }

}  // namespace ostra
