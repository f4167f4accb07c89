#include "tests/platform/imageio/metadata/exif_builder.h"

#include <algorithm>

namespace ostra::test {

Bytes ExifBuilder::number(std::uint32_t value, std::size_t size) const {
  Bytes bytes(size);
  put(bytes, 0, value, size);
  return bytes;
}

void ExifBuilder::put(Bytes& block, std::size_t at, std::uint32_t value, std::size_t size) const {
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t shift = 8 * (big_ ? size - 1 - i : i);
    block[at + i] = static_cast<std::uint8_t>(value >> shift & 0xFF);
  }
}

ExifBuilder::Entry ExifBuilder::text(std::uint16_t tag, std::string_view words) const {
  Bytes value(words.begin(), words.end());
  value.push_back(0);
  return bytes(tag, 2, value);
}

ExifBuilder::Entry ExifBuilder::bytes(std::uint16_t tag, std::uint16_t type, const Bytes& values) const {
  return {tag, type, static_cast<std::uint32_t>(values.size()), values, {}};
}

ExifBuilder::Entry ExifBuilder::shorts(std::uint16_t tag, const std::vector<std::uint16_t>& values) const {
  Entry entry{tag, 3, static_cast<std::uint32_t>(values.size()), {}, {}};
  for (const auto value : values) {
    const Bytes two = number(value, 2);
    entry.value.insert(entry.value.end(), two.begin(), two.end());
  }
  return entry;
}

ExifBuilder::Entry ExifBuilder::longs(std::uint16_t tag, const std::vector<std::uint32_t>& values) const {
  Entry entry{tag, 4, static_cast<std::uint32_t>(values.size()), {}, {}};
  for (const auto value : values) {
    const Bytes four = number(value, 4);
    entry.value.insert(entry.value.end(), four.begin(), four.end());
  }
  return entry;
}

ExifBuilder::Entry ExifBuilder::rationals(std::uint16_t tag,
                                          const std::vector<std::pair<std::uint32_t, std::uint32_t>>& values,
                                          bool hasSign) const {
  std::vector<std::uint32_t> flat;
  for (const auto& [numerator, denominator] : values) flat.insert(flat.end(), {numerator, denominator});
  Entry entry = longs(tag, flat);
  entry.type = hasSign ? 10 : 5;
  entry.count /= 2;
  return entry;
}

ExifBuilder::Entry ExifBuilder::directory(std::uint16_t tag, const std::vector<Entry>& entries) const {
  return {tag, 4, 1, Bytes(4), entries};
}

std::size_t ExifBuilder::layDown(Bytes& block, const std::vector<Entry>& entries) const {
  const std::size_t start = block.size();
  block.resize(start + 2 + 12 * entries.size() + 4);
  put(block, start, static_cast<std::uint32_t>(entries.size()), 2);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const Entry& entry = entries[i];
    const std::size_t at = start + 2 + 12 * i;
    put(block, at, entry.tag, 2);
    put(block, at + 2, entry.type, 2);
    put(block, at + 4, entry.count, 4);
    if (!entry.directory.empty()) {
      put(block, at + 8, static_cast<std::uint32_t>(layDown(block, entry.directory)), 4);
    } else if (entry.value.size() <= 4) {
      std::copy(entry.value.begin(), entry.value.end(), block.begin() + static_cast<std::ptrdiff_t>(at) + 8);
    } else {
      put(block, at + 8, static_cast<std::uint32_t>(block.size()), 4);
      block.insert(block.end(), entry.value.begin(), entry.value.end());
      if (block.size() % 2 != 0) block.push_back(0);
    }
  }
  return start;
}

Bytes ExifBuilder::build(const std::vector<Entry>& entries, const Bytes& thumbnail) const {
  Bytes block = big_ ? Bytes{'M', 'M', 0, 42} : Bytes{'I', 'I', 42, 0};
  block.resize(8);
  put(block, 4, 8, 4);
  layDown(block, entries);
  if (thumbnail.empty()) return block;
  const std::size_t next = 8 + 2 + 12 * entries.size();
  put(block, next, static_cast<std::uint32_t>(block.size()), 4);
  const auto data = static_cast<std::uint32_t>(block.size() + 2 + 12 * 3 + 4);
  layDown(block, {shorts(0x0103, {6}), longs(0x0201, {data}),
                  longs(0x0202, {static_cast<std::uint32_t>(thumbnail.size())})});
  block.insert(block.end(), thumbnail.begin(), thumbnail.end());
  return block;
}

Bytes cameraBlock(bool bigEndian) {
  const ExifBuilder b(bigEndian);
  // A directory of its own, as several makers write it: one text behind it, found by its offset in the whole
  // block.
  Bytes note = b.number(1, 2);
  for (const Bytes& part :
       {b.number(6, 2), b.number(2, 2), b.number(16, 4), b.number(0, 4), b.number(0, 4)}) {
    note.insert(note.end(), part.begin(), part.end());
  }
  for (const char c : std::string_view("MakerNote inside")) note.push_back(static_cast<std::uint8_t>(c));
  Bytes thumbnail{0xFF, 0xD8, 0xFF};
  thumbnail.resize(600, 0x5A);
  Bytes block = b.build(
      {b.text(0x010F, "Canon"), b.text(0x0110, "Canon EOS Test"), b.shorts(0x0112, {6}),
       b.rationals(0x011A, {{300, 1}}), b.rationals(0x011B, {{300, 1}}), b.shorts(0x0128, {2}),
       b.text(0x0132, "2024:02:03 04:05:06"), b.text(0x013B, "Ann Other"),
       b.directory(
           0x8769,
           {b.rationals(0x829A, {{10, 600}}), b.rationals(0x829D, {{28, 10}}), b.shorts(0x8827, {400}),
            b.bytes(0x9000, 7, {'0', '2', '3', '2'}), b.text(0x9003, "2024:02:03 04:05:06"),
            b.rationals(0x9204, {{static_cast<std::uint32_t>(-2), 3}}, true), b.bytes(0x927C, 7, note),
            b.shorts(0xA001, {1}), b.longs(0xA002, {4000}), b.shorts(0xA003, {3000}),
            b.directory(0xA005, {b.text(0x0001, "R98"), b.bytes(0x0002, 7, {'0', '1', '0', '0'})}),
            b.text(0xFDE8, "unknown but precious")}),
       b.directory(0x8825, {b.bytes(0, 1, {2, 3, 0, 0}), b.text(1, "N"),
                            b.rationals(2, {{48, 1}, {51, 1}, {2988, 100}}), b.text(3, "E"),
                            b.rationals(4, {{2, 1}, {17, 1}, {402, 10}}), b.bytes(5, 1, {0}),
                            b.rationals(6, {{3512, 100}}), b.rationals(7, {{4, 1}, {5, 1}, {6, 1}}),
                            b.text(29, "2024:02:03")})},
      thumbnail);
  const std::size_t inside = positionOf(block, "MakerNote inside");
  b.put(block, inside - 8, static_cast<std::uint32_t>(inside), 4);
  return block;
}

Bytes makerNoteOf(const Bytes& block) {
  constexpr std::size_t kSize = 2 + 12 + 4 + 16;
  const std::size_t end = positionOf(block, "MakerNote inside") + 16;
  if (end < kSize || end > block.size()) return {};
  return {block.begin() + static_cast<std::ptrdiff_t>(end - kSize),
          block.begin() + static_cast<std::ptrdiff_t>(end)};
}

std::size_t positionOf(const Bytes& block, std::string_view pattern) {
  const std::string_view text(reinterpret_cast<const char*>(block.data()), block.size());
  return text.find(pattern);
}

std::vector<std::size_t> differences(const Bytes& a, const Bytes& b) {
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < std::max(a.size(), b.size()); ++i) {
    if (i >= a.size() || i >= b.size() || a[i] != b[i]) places.push_back(i);
  }
  return places;
}

}  // namespace ostra::test
