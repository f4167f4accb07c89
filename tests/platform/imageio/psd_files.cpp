#include "tests/platform/imageio/psd_files.h"

#include <algorithm>

namespace ostra::test {
namespace {

void append(Bytes& bytes, const Bytes& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

Bytes big(std::uint64_t number, int size) {
  Bytes bytes;
  for (int i = size - 1; i >= 0; --i) bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
  return bytes;
}

std::size_t rowSize(const PsdParts& parts) { return (std::size_t{parts.width} * parts.bits + 7) / 8; }

// Runs and pieces of up to 128, with a byte that means nothing before each row.
Bytes packed(ByteView row) {
  Bytes bytes = {128};
  for (std::size_t i = 0; i < row.size();) {
    std::size_t run = 1;
    while (i + run < row.size() && run < 128 && row[i + run] == row[i]) ++run;
    if (run > 1) {
      append(bytes, {static_cast<std::uint8_t>(257 - run), row[i]});
    } else {
      while (i + run < row.size() && run < 128 && row[i + run] != row[i + run - 1]) ++run;
      bytes.push_back(static_cast<std::uint8_t>(run - 1));
      bytes.insert(bytes.end(), row.begin() + static_cast<std::ptrdiff_t>(i),
                   row.begin() + static_cast<std::ptrdiff_t>(i + run));
    }
    i += run;
  }
  return bytes;
}

Bytes pixels(const PsdParts& parts) {
  const Bytes samples = psdSamples(parts);
  if (!parts.isPacked) return joined({{0, 0}, samples});
  Bytes counts, rows;
  for (std::size_t at = 0; at < samples.size(); at += rowSize(parts)) {
    const Bytes row = packed(ByteView(samples).subspan(at, rowSize(parts)));
    append(counts, big(row.size(), parts.isLarge ? 4 : 2));
    append(rows, row);
  }
  return joined({{0, 1}, counts, rows});
}

}  // namespace

Bytes psdSamples(const PsdParts& parts) {
  if (!parts.samples.empty()) return parts.samples;
  Bytes samples = randomBytes(rowSize(parts) * parts.height * parts.channels, parts.seed);
  // Runs, so that packing has something to do.
  for (std::size_t i = 0; i + 40 < samples.size(); i += 100)
    std::fill_n(samples.begin() + static_cast<std::ptrdiff_t>(i), 40, samples[i]);
  return samples;
}

Bytes psdOf(const PsdParts& parts) {
  const auto section = [](const Bytes& data, int size) { return joined({big(data.size(), size), data}); };
  return joined({bytesOfText("8BPS"), big(parts.isLarge ? 2 : 1, 2), Bytes(6), big(parts.channels, 2),
                 big(parts.height, 4), big(parts.width, 4), big(parts.bits, 2), big(parts.mode, 2),
                 section(parts.colours, 4), section(parts.resources, 4),
                 section(parts.layers, parts.isLarge ? 8 : 4), pixels(parts)});
}

Bytes psdResource(unsigned number, const Bytes& data) {
  return joined(
      {bytesOfText("8BIM"), big(number, 2), {0, 0}, big(data.size(), 4), data, Bytes(data.size() % 2)});
}

Bytes psdTransparentLayers(bool isLarge) { return joined({big(2, isLarge ? 8 : 4), {0xFF, 0xFF}, Bytes(4)}); }

}  // namespace ostra::test
