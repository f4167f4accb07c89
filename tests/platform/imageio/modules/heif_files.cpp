#include "tests/platform/imageio/modules/heif_files.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

namespace ostra::test {
namespace {

std::size_t number(const Bytes& bytes, std::size_t at, std::size_t size) {
  std::size_t value = 0;
  for (std::size_t i = 0; i < size; ++i) value = value << 8 | bytes.at(at + i);
  return value;
}

void add(Bytes& bytes, std::size_t at, std::size_t size, std::size_t more) {
  std::size_t value = number(bytes, at, size) + more;
  for (std::size_t i = size; i-- > 0; value >>= 8) bytes.at(at + i) = static_cast<std::uint8_t>(value);
}

/// Where a box begins; its name stands behind its size.
std::size_t boxAt(const Bytes& file, std::string_view name) {
  const std::size_t at = positionOf(name, file);
  if (at == file.size() || at < 4) throw std::runtime_error("no such box");
  return at - 4;
}

void append32(Bytes& bytes, std::uint32_t value) {
  for (const int shift : {24, 16, 8, 0}) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

// Of the versions 0 and 1 with places of 4 bytes and no common base, as the tools write them.
void moveLocations(Bytes& file, std::size_t more) {
  const std::size_t box = boxAt(file, "iloc");
  const std::size_t version = file.at(box + 8), sizes = number(file, box + 12, 2);
  const std::size_t base = sizes >> 4 & 15, index = version == 0 ? 0 : sizes & 15;
  if (version > 1 || sizes >> 8 != 0x44) throw std::runtime_error("other places than expected");
  std::size_t at = box + 16;
  for (std::size_t items = number(file, box + 14, 2); items > 0; --items) {
    const bool inFile = version == 0 || number(file, at + 2, 2) == 0;
    at += version == 0 ? 4 : 6;
    at += base;
    const std::size_t extents = number(file, at, 2);
    at += 2;
    for (std::size_t i = 0; i < extents; ++i) {
      if (inFile) add(file, at + index, 4, more);
      at += index + 8;
    }
  }
}

}  // namespace

Bytes withHeifProperty(const Bytes& file, std::string_view type, const Bytes& content) {
  Bytes result = file;
  const std::size_t boxSize = 8 + content.size(), more = boxSize + 1;
  moveLocations(result, more);
  const std::size_t primary = number(result, boxAt(result, "pitm") + 12, 2);
  const std::size_t container = boxAt(result, "ipco"),
                    containerEnd = container + number(result, container, 4);
  std::size_t properties = 0;
  for (std::size_t at = container + 8; at < containerEnd; at += number(result, at, 4)) ++properties;
  // Behind the primary item's other ones.
  const std::size_t map = boxAt(result, "ipma");
  std::size_t at = map + 16;
  while (number(result, at, 2) != primary) at += 3 + result.at(at + 2);
  const std::size_t end = at + 3 + result.at(at + 2);
  ++result.at(at + 2);
  add(result, map, 4, 1);
  add(result, container, 4, boxSize);
  add(result, boxAt(result, "iprp"), 4, more);
  add(result, boxAt(result, "meta"), 4, more);
  result.insert(result.begin() + static_cast<std::ptrdiff_t>(end), static_cast<std::uint8_t>(properties + 1));
  Bytes box;
  append32(box, static_cast<std::uint32_t>(boxSize));
  box.insert(box.end(), type.begin(), type.end());
  box.insert(box.end(), content.begin(), content.end());
  result.insert(result.begin() + static_cast<std::ptrdiff_t>(containerEnd), box.begin(), box.end());
  return result;
}

Bytes cleanAperture(std::uint32_t width, std::uint32_t height, std::int32_t x, std::int32_t y) {
  Bytes content;
  for (const std::uint32_t value :
       {width, height, static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)}) {
    append32(content, value);
    append32(content, 1);
  }
  return content;
}

Bytes withBytesAt(Bytes file, std::string_view text, std::size_t after, const Bytes& bytes) {
  std::copy(bytes.begin(), bytes.end(),
            file.begin() + static_cast<std::ptrdiff_t>(positionOf(text, file) + after));
  return file;
}

double peakSignalToNoise(const std::vector<std::uint16_t>& a, const std::vector<std::uint16_t>& b) {
  if (a.size() != b.size() || a.empty()) return 0;
  double squares = 0;
  for (std::size_t i = 0; i < a.size(); ++i) squares += std::pow(double(a[i]) - double(b[i]), 2);
  return squares == 0 ? 200 : 10 * std::log10(65535.0 * 65535.0 * static_cast<double>(a.size()) / squares);
}

int largestDifference(const std::vector<std::uint16_t>& a, const std::vector<std::uint16_t>& b) {
  if (a.size() != b.size()) return 65536;
  int largest = 0;
  for (std::size_t i = 0; i < a.size(); ++i) largest = std::max(largest, std::abs(int(a[i]) - int(b[i])));
  return largest;
}

Pixels softPixels(std::uint32_t width, std::uint32_t height, CGColorSpaceModel model, unsigned bits,
                  CGImageAlphaInfo alpha) {
  const bool gray = model == CGColorSpaceModel::monochrome;
  const bool hasAlpha = alpha == CGImageAlphaInfo::last;
  const unsigned samples = gray ? (hasAlpha ? 2 : 1) : 4;
  return pixelsOf(softSamples(width, height, samples, bits), width, height, model, bits, alpha);
}

}  // namespace ostra::test
