#include "platform/imageio/metadata/exif_extract.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>
#include <vector>

#include "platform/imageio/limits.h"
#include "platform/imageio/metadata/exif_tags.h"
#include "platform/imageio/metadata/tiff_storage_tags.h"

namespace ostra {
namespace {

constexpr std::size_t kHeader = 8, kEntry = 12, kFarthestNote = 65527;
constexpr std::uint16_t kMakerNote = 0x927C;

struct Pointer {
  IfdKind from;
  std::uint16_t tag;
  IfdKind to;
};
constexpr std::array<Pointer, 3> kPointers = {{{IfdKind::tiff, kExifPointer, IfdKind::exif},
                                               {IfdKind::tiff, kGpsPointer, IfdKind::gps},
                                               {IfdKind::exif, kInteropPointer, IfdKind::interop}}};

/// An entry as the block will hold it.
struct Field {
  std::uint16_t tag = 0, type = 0;
  std::uint32_t count = 0;
  Bytes own;       // the value where it had to be put in other words
  ByteRange from;  // else where it lies in the file
  std::optional<IfdKind> pointsAt = std::nullopt;
  std::size_t size() const { return own.empty() ? from.size : own.size(); }
};

class Extraction {
 public:
  Extraction(const TiffStructure& file, std::size_t most) : file_(file), most_(most) {}

  Bytes block(std::uint64_t directory) {
    choose(IfdKind::tiff, directory);
    dropEmpty();
    if (chosen_.empty()) return {};
    place();
    for (const auto& [kind, fields] : chosen_) writeDirectory(kind, fields);
    return std::move(out_);
  }

 private:
  using Fields = std::vector<Field>;

  void choose(IfdKind kind, std::uint64_t offset) {
    const auto directory = file_.directoryAt(offset);
    if (!directory) return;
    Fields fields;
    for (const TiffEntry& entry : directory->entries) {
      const auto pointer = pointerOf(kind, entry.tag);
      if (pointer) {
        const auto target = file_.numberOf(&entry);
        if (!target || chosen_.contains(pointer->to)) continue;
        choose(pointer->to, *target);
        fields.push_back({.tag = entry.tag,
                          .type = kLong,
                          .count = 1,
                          .own = Bytes(4),
                          .from = {},
                          .pointsAt = pointer->to});
      } else if (entry.value && !(kind == IfdKind::tiff && speaksOfStorage(entry.tag))) {
        if (auto field = fieldOf(entry)) fields.push_back(std::move(*field));
      }
    }
    // Readers count on this order.
    std::stable_sort(fields.begin(), fields.end(),
                     [](const Field& a, const Field& b) { return a.tag < b.tag; });
    chosen_[kind] = std::move(fields);
  }

  static std::optional<Pointer> pointerOf(IfdKind kind, std::uint16_t tag) {
    for (const Pointer& pointer : kPointers)
      if (pointer.from == kind && pointer.tag == tag) return pointer;
    return std::nullopt;
  }

  /// Nothing for a number that only BigTIFF can hold.
  std::optional<Field> fieldOf(const TiffEntry& entry) {
    spent_ += entry.value->size;
    if (spent_ > most_) throw LimitExceeded{LimitName::metadataBytes};
    Field field{.tag = entry.tag, .type = entry.type, .count = 0, .own = {}, .from = *entry.value};
    if (entry.count > UINT32_MAX) return std::nullopt;
    field.count = static_cast<std::uint32_t>(entry.count);
    if (entry.type < kLong8 || entry.type > kIfd8) return field;
    if (entry.type == kSignedLong8) return std::nullopt;
    field.type = kLong;
    field.own.resize(std::size_t{4} * field.count);
    for (std::uint32_t i = 0; i < field.count; ++i) {
      const auto number = file_.numberOf(&entry, i);
      if (!number || *number > UINT32_MAX) return std::nullopt;
      write32(field.own, std::size_t{4} * i, static_cast<std::uint32_t>(*number), file_.order());
    }
    return field;
  }

  /// From the innermost on: a directory of nothing but a pointer to an empty one is empty too.
  void dropEmpty() {
    for (const IfdKind kind : {IfdKind::interop, IfdKind::gps, IfdKind::exif, IfdKind::tiff}) {
      const auto found = chosen_.find(kind);
      if (found == chosen_.end()) continue;
      std::erase_if(found->second,
                    [&](const Field& field) { return field.pointsAt && !chosen_.contains(*field.pointsAt); });
      if (found->second.empty()) chosen_.erase(found);
    }
  }

  /// The directories and the header before them.
  void place() {
    keepNote();
    for (const auto& [kind, fields] : chosen_) position_[kind] = roomFor(2 + kEntry * fields.size() + 4);
    out_[0] = out_[1] = file_.order() == ByteOrder::little ? 'I' : 'M';
    write16(out_, 2, 42, file_.order());
    write32(out_, 4, static_cast<std::uint32_t>(position_.begin()->second), file_.order());
  }

  void keepNote() {
    const auto exif = chosen_.find(IfdKind::exif);
    if (exif == chosen_.end()) return;
    for (const Field& field : exif->second) {
      if (field.tag == kMakerNote && field.size() > 4 && field.from.offset >= kHeader &&
          field.from.end() <= kFarthestNote)
        note_ = field.from;
    }
  }

  /// What is laid down follows each other, around the maker note.
  std::size_t roomFor(std::size_t size) {
    cursor_ += cursor_ % 2;
    if (note_ && overlap({cursor_, size}, *note_)) cursor_ = note_->end() + note_->end() % 2;
    const std::size_t offset = std::exchange(cursor_, cursor_ + size);
    out_.resize(std::max(out_.size(), cursor_));
    return offset;
  }

  void writeDirectory(IfdKind kind, const Fields& fields) {
    std::size_t at = position_.at(kind);
    write16(out_, at, static_cast<std::uint16_t>(fields.size()), file_.order());
    at += 2;
    for (const Field& field : fields) {
      writeField(field, at);
      at += kEntry;
    }
  }

  void writeField(const Field& field, std::size_t at) {
    write16(out_, at, field.tag, file_.order());
    write16(out_, at + 2, field.type, file_.order());
    write32(out_, at + 4, field.count, file_.order());
    const ByteView value =
        field.own.empty() ? file_.file().subspan(field.from.offset, field.from.size) : ByteView(field.own);
    if (field.pointsAt) {
      write32(out_, at + 8, static_cast<std::uint32_t>(position_.at(*field.pointsAt)), file_.order());
    } else if (field.size() <= 4) {
      std::copy(value.begin(), value.end(), out_.begin() + static_cast<std::ptrdiff_t>(at + 8));
    } else {
      const bool keepsPlace = field.tag == kMakerNote && note_ && field.from.offset == note_->offset;
      const std::size_t offset = keepsPlace ? note_->offset : roomFor(value.size());
      out_.resize(std::max(out_.size(), offset + value.size()));
      std::copy(value.begin(), value.end(), out_.begin() + static_cast<std::ptrdiff_t>(offset));
      write32(out_, at + 8, static_cast<std::uint32_t>(offset), file_.order());
    }
  }

  const TiffStructure& file_;
  std::size_t most_, spent_ = 0, cursor_ = kHeader;
  std::map<IfdKind, Fields> chosen_;
  std::map<IfdKind, std::size_t> position_;
  std::optional<ByteRange> note_;
  Bytes out_;
};

}  // namespace

Bytes exifBlockOfTiff(const TiffStructure& file, std::uint64_t directory, std::size_t most) {
  return Extraction(file, most).block(directory);
}

}  // namespace ostra
