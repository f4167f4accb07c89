#include "tests/platform/imageio/gif_files.h"

#include <algorithm>
#include <map>
#include <random>

namespace ostra::test {
namespace {

void append16(Bytes& bytes, std::uint32_t number) {
  bytes.push_back(static_cast<std::uint8_t>(number));
  bytes.push_back(static_cast<std::uint8_t>(number >> 8));
}
void append(Bytes& bytes, const Bytes& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

std::uint8_t paletteFlags(bool there, unsigned bits) {
  return static_cast<std::uint8_t>((there ? 0x80u : 0u) | (bits - 1));
}

Bytes storedRows(const GifParts& parts) {
  const Bytes entries = gifEntries(parts);
  if (!parts.interlaced) return entries;
  Bytes stored;
  for (const auto& [first, step] : {std::pair{0u, 8u}, {4u, 8u}, {2u, 4u}, {1u, 2u}}) {
    for (std::uint32_t y = first; y < parts.height; y += step) {
      const auto row = entries.begin() + static_cast<std::ptrdiff_t>(std::size_t{y} * parts.width);
      stored.insert(stored.end(), row, row + static_cast<std::ptrdiff_t>(parts.width));
    }
  }
  return stored;
}

Bytes frameOf(const GifParts& parts) {
  Bytes frame = {0x2C};
  for (const std::uint32_t number : {parts.left, parts.top, parts.width, parts.height})
    append16(frame, number);
  const bool local = parts.localPalette && parts.hasPalette;
  frame.push_back(static_cast<std::uint8_t>((local ? paletteFlags(true, parts.bits) : 0) |
                                            (parts.interlaced ? 0x40 : 0)));
  if (local) append(frame, gifPalette(parts));
  append(frame, parts.data ? *parts.data : gifData(storedRows(parts), parts.bits));
  return frame;
}

void zeroHidden(std::vector<std::uint16_t>& samples) {
  for (std::size_t i = 0; i < samples.size(); i += 4) {
    if (samples[i + 3] == 0) std::fill_n(samples.begin() + static_cast<std::ptrdiff_t>(i), 3, 0);
  }
}

}  // namespace

Bytes gifPalette(const GifParts& parts) {
  return randomBytes(std::size_t{3} << parts.bits, parts.seed + 100);
}

Bytes gifEntries(const GifParts& parts) {
  std::mt19937 random(parts.seed);
  Bytes entries;
  const std::size_t size = std::size_t{parts.width} * parts.height;
  while (entries.size() < size) {
    const std::size_t run = random() % 3 == 0 ? 1 + random() % 40 : 1;
    entries.insert(entries.end(), std::min(run, size - entries.size()),
                   static_cast<std::uint8_t>(random() % (1u << parts.bits)));
  }
  return entries;
}

Bytes gifOf(const GifParts& parts) {
  Bytes file = bytesOfText("GIF89a");
  append16(file, parts.screenWidth);
  append16(file, parts.screenHeight);
  const bool global = parts.hasPalette && (!parts.localPalette || parts.wrongGlobalPalette);
  file.push_back(paletteFlags(global, parts.bits));
  file.push_back(0);
  file.push_back(parts.aspect);
  if (global)
    append(file, parts.wrongGlobalPalette ? Bytes(std::size_t{3} << parts.bits, 7) : gifPalette(parts));
  append(file, parts.extensions);
  for (unsigned i = 0; i < parts.frames; ++i) {
    if (parts.transparent) append(file, gifExtension(0xF9, Bytes{1, 5, 0, *parts.transparent}));
    append(file, frameOf(parts));
  }
  file.push_back(0x3B);
  return file;
}

std::vector<std::uint16_t> gifCanvas(const GifParts& parts) {
  const Bytes palette = gifPalette(parts), entries = gifEntries(parts);
  std::vector<std::uint16_t> canvas(std::size_t{4} * parts.screenWidth * parts.screenHeight);
  for (std::uint32_t y = 0; y < parts.height; ++y) {
    for (std::uint32_t x = 0; x < parts.width; ++x) {
      const std::uint8_t entry = entries[std::size_t{y} * parts.width + x];
      if (entry == parts.transparent) continue;
      const std::size_t at = 4 * (std::size_t{parts.top + y} * parts.screenWidth + parts.left + x);
      for (std::size_t c = 0; c < 3; ++c)
        canvas[at + c] = static_cast<std::uint16_t>(palette[3 * std::size_t{entry} + c] * 257);
      canvas[at + 3] = 65535;
    }
  }
  return canvas;
}

Bytes gifDataOfCodes(const std::vector<GifCode>& codes, unsigned codeSize) {
  Bytes bytes;
  std::uint64_t pending = 0;
  unsigned held = 0;
  for (const auto& [code, bits] : codes) {
    pending |= std::uint64_t{code} << held;
    held += bits;
    for (; held >= 8; held -= 8, pending >>= 8) bytes.push_back(static_cast<std::uint8_t>(pending));
  }
  if (held > 0) bytes.push_back(static_cast<std::uint8_t>(pending));
  Bytes data = {static_cast<std::uint8_t>(codeSize)};
  append(data, gifSubBlocks(bytes));
  return data;
}

Bytes gifData(const Bytes& entries, unsigned bits, bool withEnd) {
  const unsigned codeSize = std::max(bits, 2u), clear = 1u << codeSize;
  std::vector<GifCode> codes;
  std::map<std::pair<unsigned, std::uint8_t>, unsigned> known;
  unsigned next = clear + 2, width = codeSize + 1;
  const auto restart = [&] {
    codes.push_back({clear, width});
    known.clear();
    next = clear + 2;
    width = codeSize + 1;
  };
  restart();
  unsigned current = entries.at(0);
  for (std::size_t i = 1; i < entries.size(); ++i) {
    const auto found = known.find({current, entries[i]});
    if (found != known.end()) {
      current = found->second;
      continue;
    }
    codes.push_back({current, width});
    if (next < 4096) {
      known[{current, entries[i]}] = next;
      if (next++ == 1u << width && width < 12) ++width;
    } else if (i % 3 == 0) {  // some streams go on with a full table for a while
      restart();
    }
    current = entries[i];
  }
  codes.push_back({current, width});
  if (next < 4096 && next == 1u << width && width < 12) ++width;
  if (withEnd) codes.push_back({clear + 1, width});
  return gifDataOfCodes(codes, codeSize);
}

Bytes gifSubBlocks(ByteView bytes) {
  Bytes blocks;
  for (std::size_t at = 0; at < bytes.size(); at += 255) {
    const ByteView part = bytes.subspan(at, std::min<std::size_t>(255, bytes.size() - at));
    blocks.push_back(static_cast<std::uint8_t>(part.size()));
    blocks.insert(blocks.end(), part.begin(), part.end());
  }
  blocks.push_back(0);
  return blocks;
}

Bytes gifExtension(std::uint8_t label, ByteView bytes) {
  return joined({{0x21, label}, gifSubBlocks(bytes)});
}

Bytes gifApplication(std::string_view name, ByteView bytes) {
  return joined({{0x21, 0xFF, 11}, bytesOfText(name), gifSubBlocks(bytes)});
}

std::vector<std::uint16_t> coalescedByImageMagick(const Bytes& file) {
  const TemporaryFolder folder;
  writeFile(folder.path("a.gif"), file);
  // Without an alpha channel it would fill the screen with the background colour, which browsers do not.
  run({"convert", folder.path("a.gif") + "[0]", "-alpha", "set", "-coalesce", folder.path("a.miff")});
  auto samples = rgba16ByImageMagick(folder.path("a.miff"));
  zeroHidden(samples);
  return samples;
}

}  // namespace ostra::test
