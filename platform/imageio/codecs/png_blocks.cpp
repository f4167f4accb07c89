#include "platform/imageio/codecs/png_blocks.h"

#include <algorithm>
#include <map>
#include <string_view>

#include "platform/imageio/codecs/png_text.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {
namespace {

constexpr std::string_view kExifPrefix{"Exif\0\0", 6};
constexpr std::string_view kXmpPrefix{"http://ns.adobe.com/xap/1.0/\0", 29};

using RawProfiles = std::map<std::string, Bytes, std::less<>>;

Bytes withoutPrefix(const Bytes& bytes, std::string_view prefix) {
  if (!asText(bytes).starts_with(prefix)) return bytes;
  return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(prefix.size()), bytes.end());
}

// A native block wins, then the first raw profile that holds one.
void fillFromRawProfiles(Carrier& carrier, const RawProfiles& profiles) {
  for (const std::string_view kind : {"exif", "APP1", "app1"}) {
    const auto found = profiles.find(kind);
    if (found == profiles.end()) continue;
    const bool isXmp = asText(found->second).starts_with(kXmpPrefix);
    if (isXmp && carrier.xmp.empty()) carrier.xmp = withoutPrefix(found->second, kXmpPrefix);
    if (!isXmp && carrier.exif.empty()) carrier.exif = withoutPrefix(found->second, kExifPrefix);
  }
  if (const auto xmp = profiles.find("xmp"); xmp != profiles.end() && carrier.xmp.empty())
    carrier.xmp = withoutPrefix(xmp->second, kXmpPrefix);
  for (const std::string_view kind : {"iptc", "8bim"}) {
    const auto found = profiles.find(kind);
    if (found == profiles.end() || !carrier.iptc.empty()) continue;
    if (asText(found->second).starts_with("8BIM")) {
      PhotoshopBlock block = splitPhotoshop(found->second);
      carrier.iptc = std::move(block.iptc);
      if (carrier.photoshopResources.empty()) carrier.photoshopResources = std::move(block.resources);
    } else if (!found->second.empty() && found->second[0] == 0x1C) {
      carrier.iptc = found->second;
    }
  }
}

void takeText(PngText text, PngBlocks& blocks, RawProfiles& profiles) {
  if (text.keyword == kPngXmpKeyword) {
    if (blocks.carrier.xmp.empty()) blocks.carrier.xmp = Bytes(text.text.begin(), text.text.end());
  } else if (text.keyword.starts_with(kPngRawProfile)) {
    auto bytes = readPngRawProfile(text.text);
    if (bytes) profiles.emplace(text.keyword.substr(kPngRawProfile.size()), std::move(*bytes));
  } else if (isPngGroupKeyword(text.keyword)) {
    blocks.groupTexts.emplace_back(std::move(text.keyword), std::move(text.text));
  } else {
    blocks.carrier.texts.emplace_back(std::move(text.keyword), std::move(text.text));
  }
}

}  // namespace

PngBlocks readPngBlocks(ByteView file, std::size_t limit) {
  PngBlocks blocks;
  RawProfiles profiles;
  std::size_t left = limit;
  PngChunkWalk walk(file);
  while (const auto chunk = walk.next()) {
    if (chunk->type == pngType("eXIf") && blocks.carrier.exif.empty() && chunk->data.size() <= left &&
        chunk->isIntact()) {
      blocks.carrier.exif = Bytes(chunk->data.begin(), chunk->data.end());
      blocks.carrier.exif = withoutPrefix(blocks.carrier.exif, kExifPrefix);
      left -= chunk->data.size();
    }
    if (auto text = readPngText(*chunk, left)) {
      left -= std::min(left, text->keyword.size() + text->text.size());
      takeText(std::move(*text), blocks, profiles);
    }
  }
  fillFromRawProfiles(blocks.carrier, profiles);
  return blocks;
}

}  // namespace ostra
