#include "platform/imageio/codecs/psd_structure.h"

#include <algorithm>
#include <string_view>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {
namespace {

constexpr std::size_t kHeaderSize = 26;
constexpr std::uint16_t kTransparentEntry = 1047, kVersionInfo = 1057;

bool allowsDepth(PsdMode mode, unsigned bits) {
  switch (mode) {
    case PsdMode::bitmap:
      return bits == 1;
    case PsdMode::indexed:
      return bits == 8;
    case PsdMode::gray:
    case PsdMode::rgb:
      return bits == 8 || bits == 16 || bits == 32;
    default:
      return bits == 8 || bits == 16;
  }
}

std::optional<PsdMode> modeOf(unsigned number) {
  for (const PsdMode mode : {PsdMode::bitmap, PsdMode::gray, PsdMode::indexed, PsdMode::rgb, PsdMode::cmyk,
                             PsdMode::duotone, PsdMode::lab})
    if (static_cast<unsigned>(mode) == number) return mode;
  return std::nullopt;
}

std::optional<PsdStructure> readHeader(ByteView file) {
  if (file.size() < kHeaderSize || asText(file.first(4)) != "8BPS") return std::nullopt;
  const unsigned version = bigEndian16(file, 4);
  const auto mode = modeOf(bigEndian16(file, 24));
  if ((version != 1 && version != 2) || !mode) return std::nullopt;
  PsdStructure psd;
  psd.mode = *mode;
  psd.isLarge = version == 2;
  psd.channels = bigEndian16(file, 12);
  psd.height = bigEndian32(file, 14);
  psd.width = bigEndian32(file, 18);
  psd.bits = bigEndian16(file, 22);
  const std::uint32_t longest = psd.isLarge ? 300'000 : 30'000;
  const auto isSide = [longest](std::uint32_t side) { return side > 0 && side <= longest; };
  if (!isSide(psd.width) || !isSide(psd.height) || !allowsDepth(psd.mode, psd.bits)) return std::nullopt;
  if (psd.channels < psd.colours() || psd.channels > 56) return std::nullopt;
  return psd;
}

// A section with its length of four or eight bytes before it; nothing when it goes beyond the file.
std::optional<ByteView> takeSection(ByteView& rest, std::size_t lengthSize) {
  if (rest.size() < lengthSize) return std::nullopt;
  std::uint64_t length = bigEndian32(rest, 0);
  if (lengthSize == 8) length = length << 32 | bigEndian32(rest, 4);
  rest = rest.subspan(lengthSize);
  if (length > rest.size()) return std::nullopt;
  const ByteView section = rest.first(static_cast<std::size_t>(length));
  rest = rest.subspan(section.size());
  return section;
}

// A negative number of layers.
bool marksTransparency(ByteView layers) { return layers.size() >= 2 && (layers[0] & 0x80) != 0; }

// Blocks that a large document measures with eight bytes, of those that are looked at or passed by.
bool isLongInLargeFiles(std::string_view key) {
  for (const std::string_view known : {"LMsk", "Lr16", "Lr32", "Layr", "Mt16", "Mt32", "Mtrn", "Alph", "FMsk",
                                       "lnk2", "FEid", "FXid", "PxSD"})
    if (key == known) return true;
  return false;
}

// Layers of deeper documents, and marks of merged transparency, lie in blocks behind the layers' own place.
bool blocksMarkTransparency(ByteView rest, bool isLarge) {
  while (rest.size() >= 12 && (asText(rest.first(4)) == "8BIM" || asText(rest.first(4)) == "8B64")) {
    const std::string_view key = asText(rest.subspan(4, 4));
    rest = rest.subspan(8);
    const auto data = takeSection(rest, isLarge && isLongInLargeFiles(key) ? 8 : 4);
    if (!data) return false;
    if (key == "Mtrn" || key == "Mt16" || key == "Mt32") return true;
    if ((key == "Lr16" || key == "Lr32" || key == "Layr") && marksTransparency(*data)) return true;
    while (!rest.empty() && rest[0] == 0) rest = rest.subspan(1);  // the padding
  }
  return false;
}

bool layersMarkTransparency(ByteView section, bool isLarge) {
  const auto layers = takeSection(section, isLarge ? 8 : 4);
  if (!layers) return false;
  if (marksTransparency(*layers)) return true;
  const auto mask = takeSection(section, 4);
  return mask && blocksMarkTransparency(section, isLarge);
}

void lookAtResources(PsdStructure& psd) {
  if (const ByteView version = findPhotoshopResource(psd.resources, kVersionInfo); version.size() >= 5)
    psd.hasMergedPicture = version[4] != 0;
  const ByteView entry = findPhotoshopResource(psd.resources, kTransparentEntry);
  if (psd.mode == PsdMode::indexed && entry.size() >= 2 && bigEndian16(entry, 0) < 256)
    psd.transparentEntry = static_cast<std::uint8_t>(entry[1]);
}

}  // namespace

unsigned PsdStructure::colours() const {
  if (mode == PsdMode::rgb || mode == PsdMode::lab) return 3;
  return mode == PsdMode::cmyk ? 4 : 1;
}

bool PsdStructure::hasAlpha() const {
  return mode == PsdMode::indexed ? transparentEntry.has_value() : hasTransparency && mode != PsdMode::cmyk;
}

CGColorSpaceModel PsdStructure::model() const {
  if (mode == PsdMode::cmyk) return CGColorSpaceModel::cmyk;
  const bool isColour = mode == PsdMode::rgb || mode == PsdMode::lab || mode == PsdMode::indexed;
  return isColour ? CGColorSpaceModel::rgb : CGColorSpaceModel::monochrome;
}

std::optional<PsdStructure> readPsdStructure(ByteView file) {
  auto psd = readHeader(file);
  if (!psd) return std::nullopt;
  ByteView rest = file.subspan(kHeaderSize);
  const auto colours = takeSection(rest, 4);
  const auto resources = colours ? takeSection(rest, 4) : std::nullopt;
  const auto layers = resources ? takeSection(rest, psd->isLarge ? 8 : 4) : std::nullopt;
  if (!layers) return std::nullopt;
  if (psd->mode == PsdMode::indexed) {
    if (colours->size() < 768) return std::nullopt;
    psd->palette = colours->first(768);
  }
  psd->resources = *resources;
  psd->hasTransparency = psd->channels > psd->colours() && psd->mode != PsdMode::bitmap &&
                         layersMarkTransparency(*layers, psd->isLarge);
  psd->pixels = rest;
  lookAtResources(*psd);
  return psd;
}

}  // namespace ostra
