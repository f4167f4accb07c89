#include "platform/imageio/metadata/exif_shed.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <vector>

#include "platform/imageio/metadata/exif_structure.h"
#include "platform/imageio/metadata/exif_tags.h"

namespace ostra {

namespace {

constexpr std::uint16_t kMakerNote = 0x927C;
constexpr std::size_t kHeaderSize = 8;

struct Item {
  ExifEntry entry;
  bool opaque = false;
  bool isPointer() const {
    return entry.tag == kExifPointer || entry.tag == kGpsPointer || entry.tag == kInteropPointer;
  }
};

/// The directories that a new layout holds, the picture's first.
constexpr std::array<IfdKind, 4> kKinds = {IfdKind::tiff, IfdKind::exif, IfdKind::gps, IfdKind::interop};
using Content = std::array<std::vector<Item>, kKinds.size()>;

bool isOrientation(std::size_t directory, const Item& item) {
  return directory == 0 && item.entry.tag == kOrientationTag;
}

bool isOpaque(IfdKind kind, const ExifEntry& entry) {
  const auto groups = exifGroups();
  const auto group =
      std::find_if(groups.begin(), groups.end(), [&](const ExifGroup& g) { return g.ifd == kind; });
  const ExifTag* tag = group == groups.end() ? nullptr : findTag(*group, entry.tag);
  return !tag || tag->form == ExifForm::data;
}

/// A maker note that lies where it can stay.
bool isFixedNote(const ExifEntry& entry) {
  return entry.tag == kMakerNote && entry.outOfLine() && entry.value->offset >= kHeaderSize;
}

/// What can be laid out anew within `limit`: values that can be found and hold no offsets of their own, and a
/// maker note that ends before it.
Content contentOf(const ExifStructure& structure, std::size_t limit) {
  constexpr std::uint16_t kSubDirectories = 0x014A;
  Content content;
  for (std::size_t i = 0; i < kKinds.size(); ++i) {
    const Ifd* ifd = structure.find(kKinds[i]);
    if (!ifd) continue;
    for (const ExifEntry& entry : ifd->entries) {
      const Item item{entry, isOpaque(kKinds[i], entry)};
      if (!entry.value || item.isPointer() || entry.tag == kSubDirectories) continue;
      if (isFixedNote(entry) && entry.value->end() > limit) continue;
      content[i].push_back(item);
    }
  }
  return content;
}

/// Lays directories and values around the maker note, which keeps its offset.
class Layout {
 public:
  Layout(ByteView block, ByteOrder order, const Content& content)
      : block_(block), order_(order), content_(content) {
    for (const Item& item : content[1]) {
      if (isFixedNote(item.entry)) note_ = item.entry.value;
    }
    bytes_.assign(block.begin(), block.begin() + kHeaderSize);
    if (note_) copy(*note_, note_->offset);
  }

  Bytes make() {
    std::array<std::size_t, kKinds.size()> positions{};
    for (std::size_t i = 0; i < kKinds.size(); ++i) {
      if (rowsIn(i) > 0) positions[i] = place(2 + 12 * rowsIn(i) + 4);
    }
    for (std::size_t i = 0; i < kKinds.size(); ++i) {
      if (positions[i] != 0) writeDirectory(i, positions);
    }
    write32(bytes_, 4, static_cast<std::uint32_t>(positions[0]), order_);
    return std::move(bytes_);
  }

 private:
  bool hasChild(std::size_t directory, std::size_t child) const {
    const bool related = directory == 0 ? child == 1 || child == 2 : directory == 1 && child == 3;
    return related && rowsIn(child) > 0;
  }
  std::size_t rowsIn(std::size_t directory) const {
    std::size_t rows = content_[directory].size();
    for (std::size_t child = 1; child < kKinds.size(); ++child) rows += hasChild(directory, child) ? 1 : 0;
    return rows;
  }

  /// An even place of `size` bytes: before the maker note while there is room, else behind it.
  std::size_t place(std::size_t size) {
    const auto even = [](std::size_t offset) { return offset + offset % 2; };
    const bool before = !note_ || even(front_) + size <= note_->offset;
    std::size_t& end = before ? front_ : back_;
    const std::size_t at = even(before ? end : std::max(end, note_->end()));
    end = at + size;
    if (bytes_.size() < end) bytes_.resize(end);
    return at;
  }

  void copy(const ByteRange& from, std::size_t to) {
    if (bytes_.size() < to + from.size) bytes_.resize(to + from.size);
    std::copy_n(block_.begin() + static_cast<std::ptrdiff_t>(from.offset), from.size,
                bytes_.begin() + static_cast<std::ptrdiff_t>(to));
  }

  void writeDirectory(std::size_t directory, const std::array<std::size_t, kKinds.size()>& positions);
  void writeItem(std::size_t at, const Item& item);

  ByteView block_;
  ByteOrder order_;
  const Content& content_;
  std::optional<ByteRange> note_;
  std::size_t front_ = kHeaderSize, back_ = 0;
  Bytes bytes_;
};

void Layout::writeItem(std::size_t at, const Item& item) {
  copy({item.entry.position, 12}, at);
  const ByteRange value = *item.entry.value;
  const bool stays = note_ && isFixedNote(item.entry) && value.offset == note_->offset;
  if (!item.entry.outOfLine() || stays) return;
  const std::size_t offset = place(value.size);
  copy(value, offset);
  write32(bytes_, at + 8, static_cast<std::uint32_t>(offset), order_);
}

void Layout::writeDirectory(std::size_t directory, const std::array<std::size_t, kKinds.size()>& positions) {
  constexpr std::array<std::uint16_t, kKinds.size()> kPointers = {0, kExifPointer, kGpsPointer,
                                                                  kInteropPointer};
  std::vector<Item> items = content_[directory];
  for (std::size_t child = 1; child < kKinds.size(); ++child) {
    if (!hasChild(directory, child)) continue;
    Item pointer;
    pointer.entry = {
        .tag = kPointers[child], .type = kLong, .count = 1, .position = positions[child], .value = {}};
    items.push_back(pointer);
  }
  std::stable_sort(items.begin(), items.end(),
                   [](const Item& a, const Item& b) { return a.entry.tag < b.entry.tag; });
  write16(bytes_, positions[directory], static_cast<std::uint16_t>(items.size()), order_);
  std::size_t at = positions[directory] + 2;
  for (const Item& item : items) {
    if (item.entry.value) {
      writeItem(at, item);
    } else {
      write16(bytes_, at, item.entry.tag, order_);
      write16(bytes_, at + 2, item.entry.type, order_);
      write32(bytes_, at + 4, item.entry.count, order_);
      write32(bytes_, at + 8, static_cast<std::uint32_t>(item.entry.position), order_);
    }
    at += 12;
  }
}

/// At least as much as it takes to lay out the content; 0 when it holds nothing.
std::size_t sizeOf(const Content& content) {
  std::size_t size = 0;
  for (const auto& items : content) {
    for (const Item& item : items) size += 12 + (item.entry.outOfLine() ? item.entry.value->size : 0);
  }
  return size;
}

/// Drops the value that costs most for what it says, the orientation when it is the last one.
void dropOne(Content& content) {
  std::vector<Item>* home = nullptr;
  std::size_t worst = 0;
  const auto cost = [&](std::size_t directory, const Item& item) {
    return std::tuple(!isOrientation(directory, item), item.opaque, item.entry.value->size);
  };
  std::tuple<bool, bool, std::size_t> most{};
  for (std::size_t i = 0; i < content.size(); ++i) {
    for (std::size_t j = 0; j < content[i].size(); ++j) {
      if (cost(i, content[i][j]) <= most) continue;
      most = cost(i, content[i][j]);
      home = &content[i];
      worst = j;
    }
  }
  if (home) home->erase(home->begin() + static_cast<std::ptrdiff_t>(worst));
}

}  // namespace

std::optional<Bytes> shedExif(Bytes exif, std::size_t limit) {
  const auto structure = parseExif(exif);
  if (!structure) return std::nullopt;
  if (exif.size() <= limit) return exif;
  Content content = contentOf(*structure, limit);
  for (; sizeOf(content) > 0; dropOne(content)) {
    // Values that share their bytes would be laid out apart: the sum is looked at before anything is made.
    if (sizeOf(content) > limit) continue;
    Bytes smaller = Layout(exif, structure->order, content).make();
    if (smaller.size() <= limit) return smaller;
  }
  return std::nullopt;
}

}  // namespace ostra
