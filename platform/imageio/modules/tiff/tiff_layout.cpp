#include "platform/imageio/modules/tiff/tiff_layout.h"

#include <algorithm>

#include "platform/imageio/metadata/tiff_structure.h"

namespace ostra {
namespace {

constexpr std::size_t kBigHeader = 16;

void alignToWords(Bytes& file) { file.resize((file.size() + 1) & ~std::size_t{1}); }

}  // namespace

void TiffLayout::append(Bytes& bytes, std::uint64_t number, unsigned size) const {
  for (unsigned i = 0; i < size; ++i) {
    const unsigned shift = 8 * (order_ == ByteOrder::little ? i : size - 1 - i);
    bytes.push_back(static_cast<std::uint8_t>(number >> shift));
  }
}

void TiffLayout::put(std::uint64_t at, std::uint64_t number, unsigned size) {
  Bytes bytes;
  append(bytes, number, size);
  std::copy(bytes.begin(), bytes.end(), file_.begin() + static_cast<std::ptrdiff_t>(at));
}

TiffField TiffLayout::shorts(std::uint16_t tag, const std::vector<std::uint16_t>& numbers) const {
  TiffField field{tag, kShort, numbers.size()};
  for (const std::uint16_t number : numbers) append(field.value, number, 2);
  return field;
}

TiffField TiffLayout::longs(std::uint16_t tag, const std::vector<std::uint32_t>& numbers) const {
  TiffField field{tag, kLong, numbers.size()};
  for (const std::uint32_t number : numbers) append(field.value, number, 4);
  return field;
}

TiffField TiffLayout::places(std::uint16_t tag, const std::vector<std::uint64_t>& numbers) const {
  TiffField field{tag, big_ ? std::uint16_t{kLong8} : std::uint16_t{kLong}, numbers.size()};
  for (const std::uint64_t number : numbers) append(field.value, number, word());
  return field;
}

TiffField TiffLayout::bytes(std::uint16_t tag, std::uint16_t type, ByteView value) const {
  return {tag, type, value.size(), Bytes(value.begin(), value.end())};
}

/// A value that the entry itself can hold, and one that the header will lie over, is taken out of its place.
void TiffLayout::makeInline(TiffField& field) const {
  if (!field.place || (field.place->size > word() && (!big_ || field.place->offset >= kBigHeader))) return;
  const ByteView value = ByteView(file_).subspan(field.place->offset, field.place->size);
  field.value.assign(value.begin(), value.end());
  field.place.reset();
}

std::uint64_t TiffLayout::layDown(std::vector<TiffField> fields) {
  const auto byTag = [](const TiffField& a, const TiffField& b) { return a.tag < b.tag; };
  std::stable_sort(fields.begin(), fields.end(), byTag);
  const auto sameTag = [](const TiffField& a, const TiffField& b) { return a.tag == b.tag; };
  fields.erase(std::unique(fields.begin(), fields.end(), sameTag), fields.end());
  Bytes directory;
  append(directory, fields.size(), big_ ? 8 : 2);
  for (TiffField& field : fields) {
    makeInline(field);
    append(directory, field.tag, 2);
    append(directory, field.type, 2);
    append(directory, field.count, word());
    if (field.place) {
      append(directory, field.place->offset, word());
    } else if (field.value.size() <= word()) {
      field.value.resize(word());
      directory.insert(directory.end(), field.value.begin(), field.value.end());
    } else {
      alignToWords(file_);
      append(directory, file_.size(), word());
      file_.insert(file_.end(), field.value.begin(), field.value.end());
    }
  }
  append(directory, 0, word());
  alignToWords(file_);
  const std::uint64_t offset = file_.size();
  file_.insert(file_.end(), directory.begin(), directory.end());
  return offset;
}

void TiffLayout::writeHeader(std::uint64_t firstDirectory) {
  file_[0] = file_[1] = order_ == ByteOrder::little ? 'I' : 'M';
  put(2, big_ ? 43 : 42, 2);
  if (big_) {
    put(4, 8, 2);
    put(6, 0, 2);
  }
  put(big_ ? 8 : 4, firstDirectory, word());
}

}  // namespace ostra
