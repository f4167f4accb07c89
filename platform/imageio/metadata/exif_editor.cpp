#include "platform/imageio/metadata/exif_editor.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace ostra {

namespace {

/// The tags of a thumbnail directory that point at picture data, with the tags of its sizes.
constexpr std::uint16_t kThumbnailData[][2] = {{0x0111, 0x0117}, {0x0144, 0x0145}, {0x0201, 0x0202}};

std::optional<std::uint32_t> numberAt(ByteView bytes, ByteOrder order, const ExifEntry* entry) {
  if (!entry || !entry->value || entry->count != 1) return std::nullopt;
  if (entry->type == kShort) return read16(bytes, entry->value->offset, order);
  if (entry->type == kLong) return read32(bytes, entry->value->offset, order);
  return std::nullopt;
}

/// `range` without what the sorted `live` ranges cover.
std::vector<ByteRange> without(ByteRange range, const std::vector<ByteRange>& live) {
  std::vector<ByteRange> rest;
  std::size_t at = range.offset;
  for (const ByteRange& kept : live) {
    if (kept.offset >= range.end()) break;
    if (kept.offset > at) rest.push_back({at, kept.offset - at});
    at = std::max(at, kept.end());
  }
  if (at < range.end()) rest.push_back({at, range.end() - at});
  return rest;
}

/// An entry of a directory that is laid down anew: an old one, or one that is added.
struct Row {
  std::uint16_t tag = 0;
  std::size_t oldPosition = 0;
  const ExifField* added = nullptr;
};

std::vector<Row> rowsOf(const Ifd* ifd, const std::vector<ExifField>& added) {
  std::vector<Row> rows;
  if (ifd) {
    for (const ExifEntry& entry : ifd->entries) rows.push_back({entry.tag, entry.position, nullptr});
  }
  for (const ExifField& field : added) rows.push_back({field.tag, 0, &field});
  std::stable_sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) { return a.tag < b.tag; });
  return rows;
}

void copyWithin(Bytes& bytes, std::size_t from, std::size_t to, std::size_t size) {
  std::memmove(bytes.data() + to, bytes.data() + from, size);
}

void overwrite(Bytes& bytes, std::size_t at, ByteView value) {
  if (!value.empty()) std::memcpy(bytes.data() + at, value.data(), value.size());
}

bool byOffset(const ByteRange& a, const ByteRange& b) { return a.offset < b.offset; }

}  // namespace

std::optional<ExifEditor> ExifEditor::open(Bytes block) {
  auto structure = parseExif(block);
  if (!structure) return std::nullopt;
  ExifEditor editor;
  editor.bytes_ = std::move(block);
  editor.structure_ = std::move(*structure);
  return editor;
}

ExifEditor ExifEditor::fresh() {
  ExifEditor editor;
  editor.bytes_ = {'I', 'I', 42, 0, 0, 0, 0, 0};
  return editor;
}

const ExifEntry* ExifEditor::find(IfdKind kind, std::uint16_t tag) const {
  const Ifd* ifd = structure_.find(kind);
  return ifd ? ifd->find(tag) : nullptr;
}

void ExifEditor::reparse() {
  if (read32(bytes_, 4, structure_.order) == 0)
    return;  // fresh: its first directory is still to be laid down
  auto structure = sound_ ? parseExif(bytes_) : std::nullopt;
  sound_ = structure.has_value();
  // Without directories no further edit finds anything to do.
  structure_ = structure ? std::move(*structure) : ExifStructure{.order = structure_.order, .ifds = {}};
}

/// Zeroes what is free, and cuts it off where it is the end of the block.
void ExifEditor::settle() {
  std::vector<ByteRange> live = structure_.liveRanges();
  std::sort(live.begin(), live.end(), byOffset);
  std::vector<ByteRange> zeroed;
  for (const ByteRange& range : freed_) {
    for (const ByteRange& rest : without(range, live)) {
      std::memset(bytes_.data() + rest.offset, 0, rest.size);
      zeroed.push_back(rest);
    }
  }
  freed_.clear();
  std::sort(zeroed.begin(), zeroed.end(),
            [](const ByteRange& a, const ByteRange& b) { return a.end() > b.end(); });
  for (const ByteRange& range : zeroed) {
    if (range.end() >= bytes_.size()) bytes_.resize(std::min(range.offset, bytes_.size()));
  }
}

void ExifEditor::releaseRoom(const ExifEntry& entry) {
  if (entry.outOfLine()) freed_.push_back(*entry.value);
}

void ExifEditor::releaseRoom(const Ifd& ifd) {
  freed_.push_back(ifd.range());
  for (const ExifEntry& entry : ifd.entries) releaseRoom(entry);
}

void ExifEditor::dropThumbnails() {
  const Ifd* tiff = structure_.find(IfdKind::tiff);
  if (!tiff || !tiff->hasNext) return;
  for (const Ifd& ifd : structure_.ifds) {
    if (ifd.kind != IfdKind::thumbnail) continue;
    releaseRoom(ifd);
    for (const auto& [data, size] : kThumbnailData) {
      const auto offset = numberAt(bytes_, structure_.order, ifd.find(data));
      const auto length = numberAt(bytes_, structure_.order, ifd.find(size));
      if (offset && length && *offset < bytes_.size()) {
        freed_.push_back({*offset, std::min<std::size_t>(*length, bytes_.size() - *offset)});
      }
    }
  }
  write32(bytes_, tiff->range().end() - 4, 0, structure_.order);
  reparse();
  settle();
}

void ExifEditor::dropDangling() {
  const bool interopIsThere = structure_.find(IfdKind::interop) != nullptr;
  std::vector<std::pair<IfdKind, std::uint16_t>> dangling;
  for (const Ifd& ifd : structure_.ifds) {
    if (ifd.kind == IfdKind::thumbnail) continue;
    for (const ExifEntry& entry : ifd.entries) {
      const bool outside = !entry.value && sizeOfType(entry.type) != 0 && entry.count != 0;
      const bool toNowhere = ifd.kind == IfdKind::exif && entry.tag == kInteropPointer && !interopIsThere;
      if (outside || toNowhere) dangling.emplace_back(ifd.kind, entry.tag);
    }
  }
  for (const auto& [kind, tag] : dangling) {
    const ExifEntry* first = find(kind, tag);
    if (first && first->value && tag != kInteropPointer) {
      removeDuplicates(kind, tag);
    } else {
      removeTag(kind, tag);
    }
  }
}

void ExifEditor::closeDirectories() {
  for (const Ifd& ifd : structure_.ifds) {
    if (ifd.hasNext) continue;
    const std::size_t end = ifd.range().end();
    bytes_.resize(std::max(bytes_.size(), end + 4));
    write32(bytes_, end, 0, structure_.order);
  }
  reparse();
}

void ExifEditor::removeEntry(const Ifd& ifd, const ExifEntry& entry) {
  releaseRoom(entry);
  const std::size_t end = ifd.range().end();
  copyWithin(bytes_, entry.position + 12, entry.position, end - entry.position - 12);
  std::memset(bytes_.data() + end - 12, 0, 12);
  write16(bytes_, ifd.position, static_cast<std::uint16_t>(ifd.entries.size() - 1), structure_.order);
  reparse();
}

void ExifEditor::removeTag(IfdKind kind, std::uint16_t tag) {
  // The first one last: were it a pointer, the next of its tag would be followed in its stead.
  removeDuplicates(kind, tag);
  const Ifd* ifd = structure_.find(kind);
  const ExifEntry* entry = ifd ? ifd->find(tag) : nullptr;
  if (!entry) return;
  if (ifd->entries.size() == 1 && kind != IfdKind::tiff) return removeDirectory(kind);
  removeEntry(*ifd, *entry);
}

void ExifEditor::removeDirectory(IfdKind kind) {
  const Ifd* ifd = structure_.find(kind);
  if (!ifd || kind == IfdKind::tiff || kind == IfdKind::thumbnail) return;
  releaseRoom(*ifd);
  const Ifd* interop = kind == IfdKind::exif ? structure_.find(IfdKind::interop) : nullptr;
  if (interop) releaseRoom(*interop);
  if (kind == IfdKind::interop) return removeTag(IfdKind::exif, kInteropPointer);
  removeTag(IfdKind::tiff, kind == IfdKind::exif ? kExifPointer : kGpsPointer);
}

void ExifEditor::removeDuplicates(IfdKind kind, std::uint16_t tag) {
  for (;;) {
    const Ifd* ifd = structure_.find(kind);
    const ExifEntry* first = ifd ? ifd->find(tag) : nullptr;
    if (!first) return;
    const auto again = std::find_if(ifd->entries.begin(), ifd->entries.end(), [&](const ExifEntry& entry) {
      return entry.tag == tag && entry.position > first->position;
    });
    if (again == ifd->entries.end()) return;
    removeEntry(*ifd, *again);
  }
}

bool ExifEditor::ownsValue(const ExifEntry& entry) const {
  const auto live = structure_.liveRanges();
  return std::count_if(live.begin(), live.end(),
                       [&](const ByteRange& r) { return overlap(r, *entry.value); }) == 1;
}

std::size_t ExifEditor::append(ByteView bytes) {
  // Values start at even offsets (TIFF 6.0, section 2).
  if (bytes_.size() % 2 != 0) bytes_.push_back(0);
  const std::size_t offset = bytes_.size();
  if (bytes.size() > std::numeric_limits<std::uint32_t>::max() - offset) {
    sound_ = false;
    return offset;
  }
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  return offset;
}

/// Writes the 12 bytes of an entry, and its value at the end of the block where they do not hold it.
void ExifEditor::putEntry(std::size_t position, const ExifField& field) {
  const std::size_t offset = field.bytes.size() > 4 ? append(field.bytes) : 0;
  write16(bytes_, position, field.tag, structure_.order);
  write16(bytes_, position + 2, field.type, structure_.order);
  write32(bytes_, position + 4, field.count, structure_.order);
  write32(bytes_, position + 8, static_cast<std::uint32_t>(offset), structure_.order);
  if (offset == 0) overwrite(bytes_, position + 8, field.bytes);
}

void ExifEditor::replace(const ExifEntry& entry, const ExifField& field) {
  const std::size_t size = field.bytes.size();
  if (size > 4 && entry.outOfLine() && entry.value->size >= size && ownsValue(entry)) {
    overwrite(bytes_, entry.value->offset, field.bytes);
    write16(bytes_, entry.position + 2, field.type, structure_.order);
    write32(bytes_, entry.position + 4, field.count, structure_.order);
    freed_.push_back({entry.value->offset + size, entry.value->size - size});
  } else {
    releaseRoom(entry);
    putEntry(entry.position, field);
  }
  reparse();
}

void ExifEditor::set(IfdKind kind, ExifField field) {
  removeDuplicates(kind, field.tag);
  if (const ExifEntry* entry = find(kind, field.tag)) {
    replace(ExifEntry(*entry), field);
  } else {
    std::erase_if(added_[kind], [&](const ExifField& other) { return other.tag == field.tag; });
    added_[kind].push_back(std::move(field));
  }
}

/// Makes the parent of a directory point at `position`.
void ExifEditor::pointAt(IfdKind kind, std::size_t position) {
  const auto offset = static_cast<std::uint32_t>(position);
  if (kind == IfdKind::tiff) return write32(bytes_, 4, offset, structure_.order);
  const std::uint16_t tag = kind == IfdKind::exif ? kExifPointer : kGpsPointer;
  ExifField field{.tag = tag, .type = kLong, .count = 1, .bytes = Bytes(4)};
  write32(field.bytes, 0, offset, structure_.order);
  set(IfdKind::tiff, std::move(field));
}

/// Writes a directory with its new entries at the end of the block. The old entries keep their values where
/// they are.
void ExifEditor::layDown(IfdKind kind) {
  const std::vector<ExifField> fields = std::exchange(added_[kind], {});
  if (fields.empty() || !sound_) return;
  const Ifd* ifd = structure_.find(kind);
  const std::vector<Row> rows = rowsOf(ifd, fields);
  const std::size_t start = append(Bytes(2 + 12 * rows.size() + 4));
  if (!sound_) return;
  write16(bytes_, start, static_cast<std::uint16_t>(rows.size()), structure_.order);
  std::size_t position = start + 2;
  for (const Row& row : rows) {
    if (row.added) {
      putEntry(position, *row.added);
    } else {
      copyWithin(bytes_, row.oldPosition, position, 12);
    }
    position += 12;
  }
  if (ifd) freed_.push_back(ifd->range());
  pointAt(kind, start);
  reparse();
}

std::optional<Bytes> ExifEditor::finish() && {
  layDown(IfdKind::exif);
  layDown(IfdKind::gps);
  layDown(IfdKind::tiff);
  if (!sound_) return std::nullopt;
  const Ifd* tiff = structure_.find(IfdKind::tiff);
  if (!tiff || tiff->entries.empty()) return Bytes();
  settle();
  return std::move(bytes_);
}

}  // namespace ostra
