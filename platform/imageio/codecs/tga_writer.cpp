#include <algorithm>
#include <string_view>

#include "platform/imageio/codecs/little_endian.h"
#include "platform/imageio/codecs/plain_rows.h"
#include "platform/imageio/codecs/tga.h"
#include "platform/imageio/codecs/tga_header.h"
#include "platform/imageio/codecs/written_profile.h"
#include "platform/imageio/metadata/exif_block.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

constexpr std::size_t kLongestPacket = 128;
// From the top left on: some readers take every file for one.
constexpr unsigned kTopDown = 0x20;

bool wantsPacking(const Properties* properties) {
  if (properties == nullptr) return false;
  const Dictionary& group = groupOf(properties->tree, kCGImagePropertyTGADictionary);
  const auto found = group.find(kTgaCompression);
  return found != group.end() && found->second.number() == 1.0;
}

void appendHeader(Bytes& file, const Layout& layout, unsigned samples, bool alpha, bool packed) {
  const unsigned kind = static_cast<unsigned>(samples == 1 ? TgaKind::gray : TgaKind::rgb);
  file.insert(file.end(), {0, 0, static_cast<std::uint8_t>(kind | (packed ? 8U : 0U))});
  file.resize(12);
  appendLittleEndian16(file, layout.width);
  appendLittleEndian16(file, layout.height);
  file.push_back(static_cast<std::uint8_t>(samples * 8));
  file.push_back(static_cast<std::uint8_t>(kTopDown | (alpha ? 8 : 0)));
}

// Packets of equal pixels, and of those between them; none goes beyond its row.
void appendPacked(Bytes& file, ByteView row, std::size_t size) {
  const auto same = [&](std::size_t a, std::size_t b) {
    return std::equal(&row[a * size], &row[a * size] + size, &row[b * size]);
  };
  const std::size_t count = row.size() / size;
  for (std::size_t at = 0; at < count;) {
    std::size_t run = 1;
    while (at + run < count && run < kLongestPacket && same(at, at + run)) ++run;
    if (run > 1) {
      file.push_back(static_cast<std::uint8_t>(0x80 | (run - 1)));
      file.insert(file.end(), &row[at * size], &row[at * size] + size);
    } else {
      while (at + run < count && run < kLongestPacket &&
             (at + run + 1 == count || !same(at + run, at + run + 1)))
        ++run;
      file.push_back(static_cast<std::uint8_t>(run - 1));
      file.insert(file.end(), &row[at * size], &row[at * size] + run * size);
    }
    at += run;
  }
}

// The mark of version 2, by which readers know the file; no other areas.
void appendFooter(Bytes& file) {
  constexpr std::string_view kMark("TRUEVISION-XFILE.\0", 18);
  file.resize(file.size() + 8);
  file.insert(file.end(), kMark.begin(), kMark.end());
}

}  // namespace

Answer<Bytes> encodeTga(const Pixels& pixels, const Properties* properties) {
  const Layout& layout = pixels.layout;
  constexpr std::uint32_t kLongestSide = 65535;
  if (layout.model != CGColorSpaceModel::rgb && layout.model != CGColorSpaceModel::monochrome)
    return Fault{FaultKind::damaged};
  if (needsProfile(pixels.profile, layout.model) || layout.width > kLongestSide ||
      layout.height > kLongestSide)
    return Fault{FaultKind::damaged};
  PlainRows rows(pixels, 8);
  const unsigned samples = rows.blueFirstSamples();
  const bool packed = wantsPacking(properties);
  Bytes file;
  Bytes row(std::size_t{layout.width} * samples);
  if (!packed) file.reserve(kTgaHeaderSize + row.size() * layout.height + 26);
  appendHeader(file, layout, samples, rows.hasAlpha(), packed);
  for (std::uint32_t y = 0; y < layout.height; ++y) {
    rows.storeBlueFirst(y, row.data());
    if (packed) {
      appendPacked(file, row, samples);
    } else {
      file.insert(file.end(), row.begin(), row.end());
    }
  }
  appendFooter(file);
  return file;
}

}  // namespace ostra
