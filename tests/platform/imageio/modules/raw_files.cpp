#include "tests/platform/imageio/modules/raw_files.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace ostra::test {
namespace {

void put(Bytes& bytes, std::uint32_t value, unsigned size, ByteOrder order) {
  for (unsigned i = 0; i < size; ++i)
    bytes.push_back(static_cast<std::uint8_t>(value >> 8 * (order == ByteOrder::big ? size - 1 - i : i)));
}

class TiffWriter {
 public:
  explicit TiffWriter(ByteOrder order) : order_(order) {
    bytes_ = order == ByteOrder::big ? Bytes{'M', 'M', 0, 42} : Bytes{'I', 'I', 42, 0};
    put(bytes_, 8, 4, order);
  }

  Bytes file(const std::vector<TiffParts>& chain) {
    writeChain(chain);
    for (const auto& [place, strip] : strips_) {
      write32(bytes_, place, static_cast<std::uint32_t>(bytes_.size()), order_);
      bytes_.insert(bytes_.end(), strip.begin(), strip.end());
    }
    return std::move(bytes_);
  }

 private:
  void writeChain(const std::vector<TiffParts>& chain) {
    for (std::size_t i = 0; i < chain.size(); ++i) {
      const std::size_t next = writeDirectory(chain[i]);
      if (i + 1 < chain.size()) write32(bytes_, next, end(), order_);
    }
  }

  std::uint32_t end() const { return static_cast<std::uint32_t>(bytes_.size()); }

  /// Gives the place of the offset of the next one.
  std::size_t writeDirectory(TiffParts parts) {
    if (!parts.strips.empty()) {
      std::vector<std::uint32_t> sizes;
      for (const Bytes& strip : parts.strips) sizes.push_back(static_cast<std::uint32_t>(strip.size()));
      parts.longs(273, std::vector<std::uint32_t>(sizes.size()));
      parts.longs(279, sizes);
    }
    for (const auto& [tag, directories] : parts.below)
      parts.longs(tag, std::vector<std::uint32_t>(directories.size()));
    std::stable_sort(parts.entries.begin(), parts.entries.end(),
                     [](const auto& a, const auto& b) { return a.tag < b.tag; });
    const std::size_t position = bytes_.size();
    put(bytes_, static_cast<std::uint32_t>(parts.entries.size()), 2, order_);
    bytes_.resize(bytes_.size() + 12 * parts.entries.size() + 4);
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < parts.entries.size(); ++i)
      places.push_back(writeEntry(parts.entries[i], position + 2 + 12 * i));
    const auto placeOf = [&](std::uint16_t tag) {
      const auto found = std::find_if(parts.entries.begin(), parts.entries.end(),
                                      [&](const auto& entry) { return entry.tag == tag; });
      return places[static_cast<std::size_t>(found - parts.entries.begin())];
    };
    for (std::size_t i = 0; i < parts.strips.size(); ++i)
      strips_.emplace_back(placeOf(273) + 4 * i, parts.strips[i]);
    for (const auto& [tag, directories] : parts.below) {
      for (std::size_t i = 0; i < directories.size(); ++i) {
        write32(bytes_, placeOf(tag) + 4 * i, end(), order_);
        writeDirectory(directories[i]);
      }
    }
    return position + 2 + 12 * parts.entries.size();
  }

  /// Gives the place of its value.
  std::size_t writeEntry(const TiffParts::Entry& entry, std::size_t at) {
    write16(bytes_, at, entry.tag, order_);
    write16(bytes_, at + 2, entry.type, order_);
    write32(bytes_, at + 4, entry.count, order_);
    if (entry.value.size() <= 4) {
      std::copy(entry.value.begin(), entry.value.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(at + 8));
      return at + 8;
    }
    write32(bytes_, at + 8, end(), order_);
    const std::size_t place = bytes_.size();
    bytes_.insert(bytes_.end(), entry.value.begin(), entry.value.end());
    if (bytes_.size() % 2 != 0) bytes_.push_back(0);
    return place;
  }

  ByteOrder order_;
  Bytes bytes_;
  std::vector<std::pair<std::size_t, Bytes>> strips_;
};

/// Words in the order of the file; other depths as a row of bits, the highest first.
void appendRow(Bytes& bytes, const std::vector<unsigned>& samples, unsigned bits, ByteOrder order) {
  if (bits == 16) {
    for (const unsigned sample : samples) put(bytes, sample, 2, order);
    return;
  }
  std::uint64_t waiting = 0;
  unsigned count = 0;
  for (const unsigned sample : samples) {
    waiting = waiting << bits | sample;
    for (count += bits; count >= 8; count -= 8)
      bytes.push_back(static_cast<std::uint8_t>(waiting >> (count - 8)));
  }
  if (count > 0) bytes.push_back(static_cast<std::uint8_t>(waiting << (8 - count)));
}

unsigned sideOf(const DngParts& parts) { return parts.pattern.size() == 36 ? 6 : 2; }

unsigned colourAt(const DngParts& parts, unsigned x, unsigned y) {
  const unsigned side = sideOf(parts);
  return parts.pattern[y % side * side + x % side];
}

std::vector<Bytes> stripsOf(const DngParts& parts) {
  std::vector<Bytes> strips;
  for (unsigned y = 0; y < parts.height; ++y) {
    if (y % parts.rowsOfStrip == 0) strips.emplace_back();
    std::vector<unsigned> samples;
    for (unsigned x = 0; x < parts.width; ++x) {
      if (parts.pattern.size() > 1) samples.push_back(parts.value(x, y, colourAt(parts, x, y)));
      if (parts.pattern.size() == 1) samples.push_back(parts.value(x, y, 0));
      for (unsigned c = 0; parts.pattern.empty() && c < 3; ++c) samples.push_back(parts.value(x, y, c));
    }
    appendRow(strips.back(), samples, parts.bits, parts.order);
  }
  return strips;
}

/// ITU-T T.81, process 14: one component, each sample predicted by the one to its left, or above at the
/// beginning of a row. All 17 classes of differences have codes of five bits.
Bytes losslessJpeg(const DngParts& parts) {
  Bytes bytes = {0xFF, 0xD8, 0xFF, 0xC4};
  put(bytes, 19 + 17, 2, ByteOrder::big);
  bytes.insert(bytes.end(), {0, 0, 0, 0, 0, 17, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  for (std::uint8_t i = 0; i < 17; ++i) bytes.push_back(i);
  bytes.insert(bytes.end(), {0xFF, 0xC3, 0, 11, 16});
  put(bytes, parts.height, 2, ByteOrder::big);
  put(bytes, parts.width, 2, ByteOrder::big);
  bytes.insert(bytes.end(), {1, 0, 0x11, 0, 0xFF, 0xDA, 0, 8, 1, 0, 0, 1, 0, 0});
  std::uint64_t waiting = 0;
  unsigned count = 0;
  const auto append = [&](unsigned value, unsigned size) {
    waiting = waiting << size | value;
    for (count += size; count >= 8; count -= 8) {
      bytes.push_back(static_cast<std::uint8_t>(waiting >> (count - 8)));
      if (bytes.back() == 0xFF) bytes.push_back(0);
    }
  };
  int left = 0, above = 1 << 15;
  for (unsigned y = 0; y < parts.height; ++y) {
    for (unsigned x = 0; x < parts.width; ++x) {
      const int value = static_cast<int>(parts.value(x, y, colourAt(parts, x, y)));
      // Modulo 65536, as the decoder adds it.
      const int difference = static_cast<std::int16_t>(value - (x == 0 ? above : left));
      if (x == 0) above = value;
      left = value;
      unsigned size = 0;
      while (std::abs(difference) >> size != 0) ++size;
      append(size, 5);
      // The last class has one member.
      if (size < 16)
        append(static_cast<unsigned>(difference < 0 ? difference + (1 << size) - 1 : difference), size);
    }
  }
  append((1U << 7) - 1, 7);
  bytes.insert(bytes.end(), {0xFF, 0xD9});
  return bytes;
}

TiffParts rawDirectory(const DngParts& parts) {
  constexpr unsigned kMosaic = 32803, kLinear = 34892;
  const unsigned samples = parts.pattern.empty() ? 3 : 1;
  TiffParts raw(parts.order);
  raw.longs(254, {0});
  raw.longs(256, {parts.width});
  raw.longs(257, {parts.height});
  raw.shorts(258, std::vector<unsigned>(samples, parts.bits));
  raw.shorts(259, {parts.isCompressed ? 7U : 1U});
  const bool isMosaic = parts.pattern.size() > 1;
  raw.shorts(262, {isMosaic ? kMosaic : kLinear});
  raw.shorts(277, {samples});
  raw.longs(278, {parts.isCompressed ? parts.height : parts.rowsOfStrip});
  raw.shorts(284, {1});
  if (isMosaic) {
    raw.shorts(33421, {sideOf(parts), sideOf(parts)});
    raw.bytes(33422, Bytes(parts.pattern.begin(), parts.pattern.end()));
  }
  raw.longs(50714, std::vector<std::uint32_t>(samples, parts.black));
  raw.longs(50717, std::vector<std::uint32_t>(samples, parts.white));
  raw.strips = parts.isCompressed ? std::vector<Bytes>{losslessJpeg(parts)} : stripsOf(parts);
  if (parts.moreRaw) parts.moreRaw(raw);
  return raw;
}

void describe(const DngParts& parts, TiffParts& first) {
  first.text(271, parts.make);
  first.text(272, parts.model);
  first.shorts(274, {parts.orientation});
  if (parts.isDng) {
    first.bytes(50706, {1, 4, 0, 0});
    first.text(50708, parts.make + " " + parts.model);
  }
  first.rationals(50721, parts.matrix, kSignedRational);
  first.rationals(50728, parts.neutral);
  first.shorts(50778, {21});  // daylight
  if (parts.more) parts.more(first);
}

TiffParts preview(ByteOrder order) {
  TiffParts small(order);
  small.longs(254, {1});
  small.longs(256, {4});
  small.longs(257, {4});
  small.shorts(258, {8, 8, 8});
  small.shorts(259, {1});
  small.shorts(262, {2});
  small.shorts(277, {3});
  small.longs(278, {4});
  small.strips = {Bytes(48, 200)};
  return small;
}

}  // namespace

void TiffParts::shorts(std::uint16_t tag, const std::vector<unsigned>& values) {
  Entry entry{tag, kShort, static_cast<std::uint32_t>(values.size()), {}};
  for (const unsigned value : values) put(entry.value, value, 2, order);
  entries.push_back(std::move(entry));
}

void TiffParts::longs(std::uint16_t tag, const std::vector<std::uint32_t>& values) {
  Entry entry{tag, kLong, static_cast<std::uint32_t>(values.size()), {}};
  for (const std::uint32_t value : values) put(entry.value, value, 4, order);
  entries.push_back(std::move(entry));
}

void TiffParts::rationals(std::uint16_t tag, const std::vector<double>& values, ExifType type) {
  constexpr std::uint32_t kParts = 1000000;
  Entry entry{tag, type, static_cast<std::uint32_t>(values.size()), {}};
  for (const double value : values) {
    put(entry.value, static_cast<std::uint32_t>(std::lround(value * kParts)), 4, order);
    put(entry.value, kParts, 4, order);
  }
  entries.push_back(std::move(entry));
}

void TiffParts::text(std::uint16_t tag, std::string_view text) {
  Bytes value(text.begin(), text.end());
  value.push_back(0);
  bytes(tag, value, kAscii);
}

void TiffParts::bytes(std::uint16_t tag, const Bytes& bytes, ExifType type) {
  entries.push_back({tag, type, static_cast<std::uint32_t>(bytes.size()), bytes});
}

Bytes tiffFile(const std::vector<TiffParts>& chain) { return TiffWriter(chain.front().order).file(chain); }

Bytes dngFile(const DngParts& parts) {
  TiffParts raw = rawDirectory(parts);
  if (!parts.hasPreview) {
    describe(parts, raw);
    return tiffFile({raw});
  }
  TiffParts first = preview(parts.order);
  describe(parts, first);
  first.below.push_back({330, {raw}});
  return tiffFile({first});
}

Bytes mrwFile(unsigned width, unsigned height) {
  TiffParts about(ByteOrder::big);
  about.text(271, "Minolta Co., Ltd.");
  about.text(272, "DiMAGE A2");
  about.shorts(274, {1});
  TiffParts exif(ByteOrder::big);
  exif.rationals(0x829A, {0.25});
  about.below.push_back({0x8769, {exif}});
  Bytes head;
  const auto block = [&](const char* name, const Bytes& content) {
    head.push_back(0);
    head.insert(head.end(), name, name + 3);
    put(head, static_cast<std::uint32_t>(content.size()), 4, ByteOrder::big);
    head.insert(head.end(), content.begin(), content.end());
  };
  Bytes sensor(8);
  for (const unsigned number : {height, width, height, width}) put(sensor, number, 2, ByteOrder::big);
  sensor.insert(sensor.end(), {12, 12, 0x59, 0, 0, 0, 0, 0});
  Bytes balance(4);
  for (int i = 0; i < 4; ++i) put(balance, 256, 2, ByteOrder::big);
  block("PRD", sensor);
  block("WBG", balance);
  block("TTW", tiffFile({about}));
  Bytes file = {0, 'M', 'R', 'M'};
  put(file, static_cast<std::uint32_t>(head.size()), 4, ByteOrder::big);
  file.insert(file.end(), head.begin(), head.end());
  for (unsigned y = 0; y < height; ++y) {
    std::vector<unsigned> samples;
    for (unsigned x = 0; x < width; ++x) samples.push_back(1000 + (7 * x + 5 * y) % 2000);
    appendRow(file, samples, 12, ByteOrder::big);
  }
  return file;
}

}  // namespace ostra::test
