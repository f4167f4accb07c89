#include "tests/platform/imageio/modules/tiff_files.h"

#include <algorithm>

#include "platform/imageio/straight_rows.h"
#include "tests/platform/imageio/picture_files.h"

namespace ostra::test {
namespace {

void put(Bytes& file, std::size_t at, const Bytes& bytes) {
  if (file.size() < at + bytes.size()) file.resize(at + bytes.size());
  std::copy(bytes.begin(), bytes.end(), file.begin() + static_cast<std::ptrdiff_t>(at));
}

void append(Bytes& bytes, const Bytes& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

}  // namespace

Bytes TiffBuilder::number(std::uint64_t value, std::size_t size) const {
  Bytes bytes;
  for (std::size_t i = 0; i < size; ++i)
    bytes.push_back(static_cast<std::uint8_t>(value >> (8 * (bigEndian_ ? size - 1 - i : i))));
  return bytes;
}

TiffBuilder::Entry TiffBuilder::shorts(std::uint16_t tag, const std::vector<std::uint16_t>& numbers) const {
  Entry entry{tag, 3, numbers.size(), {}};
  for (const std::uint16_t value : numbers) append(entry.value, number(value, 2));
  return entry;
}

TiffBuilder::Entry TiffBuilder::longs(std::uint16_t tag, const std::vector<std::uint32_t>& numbers) const {
  Entry entry{tag, 4, numbers.size(), {}};
  for (const std::uint32_t value : numbers) append(entry.value, number(value, 4));
  return entry;
}

TiffBuilder::Entry TiffBuilder::bytes(std::uint16_t tag, std::uint16_t type, ByteView value) const {
  return {tag, type, value.size(), Bytes(value.begin(), value.end())};
}

TiffBuilder::Directory TiffBuilder::picture(std::uint32_t width, std::uint32_t height, std::uint16_t bits,
                                            std::uint16_t samples, std::uint16_t photometry,
                                            Bytes pixels) const {
  return {{longs(256, {width}), longs(257, {height}), shorts(258, std::vector<std::uint16_t>(samples, bits)),
           shorts(259, {1}), shorts(262, {photometry}), shorts(277, {samples}), longs(278, {height})},
          std::move(pixels),
          {}};
}

std::size_t TiffBuilder::layDown(Bytes& file, const Directory& directory) const {
  std::vector<Entry> entries = directory.entries;
  if (!directory.pixels.empty()) {
    entries.push_back(longs(273, {0}));
    entries.push_back(longs(279, {static_cast<std::uint32_t>(directory.pixels.size())}));
  }
  if (!directory.below.empty())
    entries.push_back(longs(330, std::vector<std::uint32_t>(directory.below.size())));
  std::stable_sort(entries.begin(), entries.end(),
                   [](const Entry& a, const Entry& b) { return a.tag < b.tag; });
  const std::size_t counter = big_ ? 8 : 2, each = 4 + 2 * word(), start = file.size();
  file.resize(start + counter + each * entries.size() + word());
  put(file, start, number(entries.size(), counter));
  std::size_t at = start + counter, pixelsAt = 0, belowAt = 0;
  for (const Entry& entry : entries) {
    put(file, at, number(entry.tag, 2));
    put(file, at + 2, number(entry.type, 2));
    put(file, at + 4, number(entry.count, word()));
    const std::size_t place = entry.value.size() <= word() ? at + 4 + word() : file.size();
    if (place == file.size()) put(file, at + 4 + word(), number(place, word()));
    put(file, place, entry.value);
    if (entry.tag == 273) pixelsAt = place;
    if (entry.tag == 330) belowAt = place;
    at += each;
  }
  for (std::size_t i = 0; i < directory.below.size(); ++i) {
    put(file, belowAt + 4 * i, number(file.size(), 4));
    layDown(file, directory.below[i]);
  }
  if (!directory.pixels.empty()) {
    put(file, pixelsAt, number(file.size(), 4));
    append(file, directory.pixels);
  }
  return start + counter + each * entries.size();  // where the next one's place is told
}

Bytes TiffBuilder::build(const std::vector<Directory>& chain, int loopTo) const {
  Bytes file = bigEndian_ ? Bytes{'M', 'M'} : Bytes{'I', 'I'};
  append(file, number(big_ ? 43 : 42, 2));
  if (big_) append(file, joined({number(8, 2), number(0, 2)}));
  std::size_t link = file.size();
  file.resize(file.size() + word());
  std::vector<std::size_t> places;
  for (const Directory& directory : chain) {
    file.resize((file.size() + 1) & ~std::size_t{1});
    places.push_back(file.size());
    put(file, link, number(file.size(), word()));
    link = layDown(file, directory);
  }
  if (loopTo >= 0) put(file, link, number(places[static_cast<std::size_t>(loopTo)], word()));
  return file;
}

TiffBuilder::Directory with(TiffBuilder::Directory directory, TiffBuilder::Entry entry) {
  std::erase_if(directory.entries, [&](const TiffBuilder::Entry& old) { return old.tag == entry.tag; });
  directory.entries.push_back(std::move(entry));
  return directory;
}

Bytes packedBits(const std::vector<std::uint64_t>& numbers, unsigned bits, std::size_t aRow) {
  Bytes packed;
  std::size_t used = 8;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (i % aRow == 0) used = 8;
    for (unsigned bit = bits; bit-- > 0; ++used) {
      if (used == 8) {
        packed.push_back(0);
        used = 0;
      }
      if ((numbers[i] >> bit & 1) != 0) packed.back() |= static_cast<std::uint8_t>(0x80 >> used);
    }
  }
  return packed;
}

std::vector<std::uint16_t> straightRgba16(const Pixels& pixels) {
  StraightRows rows(pixels);
  Bytes samples;
  for (std::uint32_t y = 0; y < pixels.layout.height; ++y) {
    const std::uint8_t* row = rows.row(y);
    samples.insert(samples.end(), row,
                   row + std::size_t{pixels.layout.width} * (pixels.layout.bitsPerPixel / 8u));
  }
  return asRgba16(pixelsOf(std::move(samples), pixels.layout.width, pixels.layout.height, pixels.layout.model,
                           pixels.layout.bitsPerComponent, rows.alpha()));
}

std::vector<std::uint16_t> grayOf(const Pixels& pixels) {
  std::vector<std::uint16_t> gray;
  const std::vector<std::uint16_t> all = straightRgba16(pixels);
  for (std::size_t i = 0; i < all.size(); i += 4) gray.push_back(all[i]);
  return gray;
}

}  // namespace ostra::test
