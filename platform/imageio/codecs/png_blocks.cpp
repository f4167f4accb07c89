#include "platform/imageio/codecs/png_blocks.h"

#include <algorithm>
#include <map>
#include <string_view>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/png_text.h"
#include "platform/imageio/limits.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {
namespace {

constexpr std::string_view kExifPrefix{"Exif\0\0", 6};
constexpr std::string_view kXmpPrefix{"http://ns.adobe.com/xap/1.0/\0", 29};

using RawProfiles = std::multimap<std::string, Bytes, std::less<>>;

Bytes withoutPrefix(const Bytes& bytes, std::string_view prefix) {
  if (!asText(bytes).starts_with(prefix)) return bytes;
  return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(prefix.size()), bytes.end());
}

void takeApp1(Carrier& carrier, const Bytes& block) {
  const bool isXmp = asText(block).starts_with(kXmpPrefix);
  if (isXmp && carrier.xmp.empty()) carrier.xmp = withoutPrefix(block, kXmpPrefix);
  if (!isXmp && carrier.exif.empty()) carrier.exif = withoutPrefix(block, kExifPrefix);
}

void takeIptc(Carrier& carrier, const Bytes& block) {
  if (!carrier.iptc.empty()) return;
  if (asText(block).starts_with("8BIM")) {
    PhotoshopBlock photoshop = splitPhotoshop(block);
    carrier.iptc = std::move(photoshop.iptc);
    if (carrier.photoshopResources.empty()) carrier.photoshopResources = std::move(photoshop.resources);
  } else if (!block.empty() && block[0] == 0x1C) {
    carrier.iptc = block;
  }
}

// A native block wins, then the first raw profile that holds one.
void fillFromRawProfiles(Carrier& carrier, const RawProfiles& profiles) {
  const auto forEach = [&](std::string_view kind, auto take) {
    const auto [begin, end] = profiles.equal_range(kind);
    for (auto profile = begin; profile != end; ++profile) take(carrier, profile->second);
  };
  for (const std::string_view kind : {"exif", "APP1", "app1"}) forEach(kind, takeApp1);
  forEach("xmp", [](Carrier& to, const Bytes& block) {
    if (to.xmp.empty()) to.xmp = withoutPrefix(block, kXmpPrefix);
  });
  for (const std::string_view kind : {"iptc", "8bim"}) forEach(kind, takeIptc);
}

enum class RawKind { block, profile, other };

RawKind rawKindOf(std::string_view kind) {
  for (const std::string_view known : {"exif", "APP1", "app1", "xmp", "iptc", "8bim"}) {
    if (kind == known) return RawKind::block;
  }
  return kind == "icc" || kind == "icm" ? RawKind::profile : RawKind::other;
}

// True when the text is a raw profile that is read as a block, or one of the old colours.
bool takeRawProfile(const PngText& text, RawProfiles& profiles) {
  if (!text.keyword.starts_with(kPngRawProfile)) return false;
  const std::string kind = text.keyword.substr(kPngRawProfile.size());
  const RawKind what = rawKindOf(kind);
  auto bytes = what == RawKind::block ? readPngRawProfile(text.text) : std::nullopt;
  if (bytes) profiles.emplace(kind, std::move(*bytes));
  return bytes || what == RawKind::profile;
}

void takeText(PngText text, Carrier& carrier, RawProfiles& profiles) {
  if (text.keyword == kPngXmpKeyword) {
    if (carrier.xmp.empty()) carrier.xmp = Bytes(text.text.begin(), text.text.end());
  } else if (takeRawProfile(text, profiles)) {
    return;
  } else {
    carrier.texts.push_back(std::move(text));
  }
}

// Two signed numbers and a unit.
bool isOffset(ByteView data) { return data.size() == 9 && data[8] <= 1; }

// The mode of a stereo pair.
bool isStereo(ByteView data) { return data.size() == 1 && data[0] <= 1; }

// A unit, then width and height as texts with a zero between them.
bool isScale(ByteView data) {
  if (data.size() < 4 || (data[0] != 1 && data[0] != 2)) return false;
  const std::string_view texts = asText(data.subspan(1));
  const std::size_t zero = texts.find('\0');
  return zero != 0 && zero != std::string_view::npos && zero + 1 < texts.size();
}

// Ancillary, and by its name safe to copy beside pixels that changed, or known to speak of the geometry
// alone; but none of those that are read, and none that speak of the colours.
bool isCarried(const PngChunk& chunk) {
  constexpr std::uint32_t kSafeToCopy = 0x20, kReserved = 0x2000;
  if (chunk.type == pngType("oFFs")) return isOffset(chunk.data);
  if (chunk.type == pngType("sTER")) return isStereo(chunk.data);
  if (chunk.type == pngType("sCAL")) return isScale(chunk.data);
  for (const std::uint32_t type : {pngType("eXIf"), pngType("zxIf"), pngType("pHYs"), pngType("tEXt"),
                                   pngType("zTXt"), pngType("iTXt"), pngType("mDCv"), pngType("cLLi")}) {
    if (chunk.type == type) return false;
  }
  return !chunk.isCritical() && (chunk.type & kSafeToCopy) != 0 && (chunk.type & kReserved) == 0;
}

// A density without a unit.
std::optional<PixelAspect> pixelAspectOf(const PngChunk& chunk) {
  if (chunk.type != pngType("pHYs") || chunk.data.size() != 9 || !chunk.isIntact()) return std::nullopt;
  const PixelAspect aspect{bigEndian32(chunk.data, 0), bigEndian32(chunk.data, 4)};
  const bool isAspect = chunk.data[8] == 0 && aspect.x > 0 && aspect.y > 0;
  return isAspect ? std::optional(aspect) : std::nullopt;
}

void take(std::size_t size, std::size_t& left) {
  if (size > left) throw LimitExceeded{LimitName::metadataBytes};
  left -= size;
}

void takeChunk(const PngChunk& chunk, bool afterPixels, Carrier& carrier, std::size_t& left) {
  if (const auto aspect = pixelAspectOf(chunk); aspect && !carrier.pixelAspect) carrier.pixelAspect = aspect;
  if (!isCarried(chunk) || !chunk.isIntact()) return;
  take(chunk.data.size(), left);
  carrier.pngChunks.push_back({chunk.type, Bytes(chunk.data.begin(), chunk.data.end()), afterPixels});
}

}  // namespace

Carrier readPngBlocks(ByteView file, std::size_t limit) {
  Carrier carrier;
  RawProfiles profiles;
  std::size_t left = limit;
  bool afterPixels = false;
  PngChunkWalk walk(file);
  while (const auto chunk = walk.next()) {
    if (chunk->type == pngType("IEND")) break;
    if (chunk->type == pngType("IDAT")) afterPixels = true;
    takeChunk(*chunk, afterPixels, carrier, left);
    if (chunk->type == pngType("eXIf") && carrier.exif.empty() && chunk->isIntact()) {
      take(chunk->data.size(), left);
      carrier.exif = Bytes(chunk->data.begin(), chunk->data.end());
      carrier.exif = withoutPrefix(carrier.exif, kExifPrefix);
    }
    if (auto text = readPngText(*chunk, left)) {
      take(text->keyword.size() + text->text.size(), left);
      takeText(std::move(*text), carrier, profiles);
    }
  }
  fillFromRawProfiles(carrier, profiles);
  return carrier;
}

}  // namespace ostra
