#include "platform/imageio/metadata/exif_extract.h"

#include <algorithm>
#include <map>
#include <vector>

#include "platform/imageio/metadata/exif_structure.h"
#include "platform/imageio/metadata/exif_tags.h"

namespace ostra {
namespace {

constexpr std::size_t kHeader = 8;
constexpr std::size_t kEntry = 12;

std::optional<IfdKind> pointedAt(std::uint16_t tag) {
  switch (tag) {
    case kExifPointer:
      return IfdKind::exif;
    case kGpsPointer:
      return IfdKind::gps;
    case kInteropPointer:
      return IfdKind::interop;
    default:
      return std::nullopt;
  }
}

/// Tags of the layout of the file, of its profile and of other metadata stay behind.
bool describesPicture(std::uint16_t tag) {
  const ExifGroup& group = exifGroups().front();
  const ExifTag* const known = findTag(group, tag);
  return known != nullptr && !known->structural;
}

class Extraction {
 public:
  Extraction(ByteView file, const ExifStructure& structure) : file_(file), structure_(structure) {}

  Bytes block() {
    for (const IfdKind kind : {IfdKind::tiff, IfdKind::exif, IfdKind::gps, IfdKind::interop}) choose(kind);
    dropEmpty();
    if (chosen_.empty()) return {};
    place();
    writeHeader();
    for (const auto& [kind, entries] : chosen_) writeDirectory(kind, entries);
    return std::move(out_);
  }

 private:
  using Entries = std::vector<const ExifEntry*>;

  void choose(IfdKind kind) {
    const Ifd* const ifd = structure_.find(kind);
    if (ifd == nullptr) return;
    Entries entries;
    for (const ExifEntry& entry : ifd->entries) {
      if (!entry.value) continue;
      if (kind == IfdKind::tiff && !pointedAt(entry.tag) && !describesPicture(entry.tag)) continue;
      entries.push_back(&entry);
    }
    chosen_[kind] = std::move(entries);
  }

  /// From the innermost on: a directory of nothing but a pointer to an empty one is empty too.
  void dropEmpty() {
    for (const IfdKind kind : {IfdKind::interop, IfdKind::gps, IfdKind::exif, IfdKind::tiff}) {
      const auto found = chosen_.find(kind);
      if (found == chosen_.end()) continue;
      std::erase_if(found->second, [&](const ExifEntry* entry) {
        const auto target = pointedAt(entry->tag);
        return target && (!chosen_.contains(*target) || chosen_.at(*target).empty());
      });
      if (found->second.empty()) chosen_.erase(found);
    }
  }

  void place() {
    std::size_t end = kHeader;
    for (const auto& [kind, entries] : chosen_) {
      position_[kind] = end;
      end += 2 + kEntry * entries.size() + 4;
    }
    out_.resize(end);
  }

  void writeHeader() {
    const bool little = structure_.order == ByteOrder::little;
    out_[0] = out_[1] = little ? 'I' : 'M';
    write16(out_, 2, 42, structure_.order);
    write32(out_, 4, static_cast<std::uint32_t>(position_.begin()->second), structure_.order);
  }

  void writeDirectory(IfdKind kind, const Entries& entries) {
    std::size_t at = position_.at(kind);
    write16(out_, at, static_cast<std::uint16_t>(entries.size()), structure_.order);
    at += 2;
    for (const ExifEntry* entry : entries) {
      writeEntry(*entry, at);
      at += kEntry;
    }
  }

  void writeEntry(const ExifEntry& entry, std::size_t at) {
    std::copy_n(file_.begin() + static_cast<std::ptrdiff_t>(entry.position), kEntry,
                out_.begin() + static_cast<std::ptrdiff_t>(at));
    if (const auto target = pointedAt(entry.tag)) {
      write32(out_, at + 8, static_cast<std::uint32_t>(position_.at(*target)), structure_.order);
    } else if (entry.outOfLine()) {
      if (out_.size() % 2 != 0) out_.push_back(0);
      write32(out_, at + 8, static_cast<std::uint32_t>(out_.size()), structure_.order);
      const ByteView value = file_.subspan(entry.value->offset, entry.value->size);
      out_.insert(out_.end(), value.begin(), value.end());
    }
  }

  ByteView file_;
  const ExifStructure& structure_;
  std::map<IfdKind, Entries> chosen_;
  std::map<IfdKind, std::size_t> position_;
  Bytes out_;
};

}  // namespace

Bytes exifBlockOfTiff(ByteView file) {
  const auto structure = parseExif(file);
  return structure ? Extraction(file, *structure).block() : Bytes{};
}

}  // namespace ostra
