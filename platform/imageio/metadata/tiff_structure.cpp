#include "platform/imageio/metadata/tiff_structure.h"

#include <algorithm>

#include "platform/imageio/limits.h"

namespace ostra {
namespace {

constexpr std::uint64_t kMostEntries = 4096;

std::size_t sizeOfAnyType(std::uint16_t type) {
  return type >= kLong8 && type <= kIfd8 ? 8 : sizeOfType(type);
}

bool isPlainNumber(std::uint16_t type) {
  return type == kByte || type == kShort || type == kLong || type == kIfd || type == kLong8 || type == kIfd8;
}

}  // namespace

const TiffEntry* TiffEntries::find(std::uint16_t tag) const {
  const auto found =
      std::find_if(entries.begin(), entries.end(), [&](const TiffEntry& entry) { return entry.tag == tag; });
  return found == entries.end() ? nullptr : &*found;
}

std::uint64_t TiffStructure::number(std::uint64_t at, unsigned size) const {
  std::uint64_t value = 0;
  for (unsigned i = 0; i < size; ++i) {
    const unsigned place = order_ == ByteOrder::big ? i : size - 1 - i;
    value = value << 8 | file_[at + place];
  }
  return value;
}

std::optional<TiffStructure> TiffStructure::open(ByteView file) {
  constexpr std::size_t kHeader = 8, kBigHeader = 16;
  if (file.size() < kHeader || file[0] != file[1] || (file[0] != 'I' && file[0] != 'M')) return std::nullopt;
  TiffStructure structure(file);
  structure.order_ = file[0] == 'M' ? ByteOrder::big : ByteOrder::little;
  const std::uint64_t version = structure.number(2, 2);
  structure.big_ = version == 43;
  if (version != 42 && !structure.big_) return std::nullopt;
  if (structure.big_ && (file.size() < kBigHeader || structure.number(4, 2) != 8)) return std::nullopt;
  structure.first_ = structure.big_ ? structure.number(8, 8) : structure.number(4, 4);
  return structure;
}

TiffEntry TiffStructure::entryAt(std::uint64_t at) const {
  const unsigned word = big_ ? 8 : 4;
  TiffEntry entry;
  entry.tag = static_cast<std::uint16_t>(number(at, 2));
  entry.type = static_cast<std::uint16_t>(number(at + 2, 2));
  entry.count = number(at + 4, word);
  const auto size = checkedProduct(sizeOfAnyType(entry.type), entry.count);
  if (!size || *size == 0) return entry;
  const std::uint64_t offset = *size <= word ? at + 4 + word : number(at + 4 + word, word);
  if (offset <= file_.size() && *size <= file_.size() - offset) entry.value = ByteRange{offset, *size};
  return entry;
}

std::optional<TiffEntries> TiffStructure::directoryAt(std::uint64_t offset) const {
  const unsigned word = big_ ? 8 : 4, counter = big_ ? 8 : 2, each = 4 + 2 * word;
  if (offset < 8 || offset > file_.size() || file_.size() - offset < counter) return std::nullopt;
  const std::uint64_t count = number(offset, counter), room = file_.size() - offset - counter;
  if (count > kMostEntries || count * each > room) return std::nullopt;
  TiffEntries directory;
  for (std::uint64_t i = 0; i < count; ++i) directory.entries.push_back(entryAt(offset + counter + i * each));
  if (room - count * each >= word) directory.next = number(offset + counter + count * each, word);
  return directory;
}

ByteView TiffStructure::bytesOf(const TiffEntry& entry) const {
  return entry.value ? file_.subspan(entry.value->offset, entry.value->size) : ByteView();
}

std::optional<std::uint64_t> TiffStructure::numberOf(const TiffEntry* entry, std::uint64_t index) const {
  if (entry == nullptr || !entry->value || index >= entry->count || !isPlainNumber(entry->type))
    return std::nullopt;
  const std::size_t size = sizeOfAnyType(entry->type);
  return number(entry->value->offset + index * size, static_cast<unsigned>(size));
}

}  // namespace ostra
