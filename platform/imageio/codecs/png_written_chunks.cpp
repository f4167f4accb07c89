#include "platform/imageio/codecs/png_written_chunks.h"

#include <algorithm>
#include <string_view>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/dots_a_metre.h"
#include "platform/imageio/codecs/inflate.h"
#include "platform/imageio/codecs/png_text.h"
#include "platform/imageio/codecs/written_profile.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/exif_block.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/metadata/text_encoding.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

using Chunks = std::vector<PngWrittenChunk>;

void append(Bytes& bytes, ByteView more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

void add(Chunks& chunks, std::string_view type, Bytes data) {
  // The format's own limit; longer text is no reason to write no file.
  if (data.size() > 0x7FFFFFFF) return;
  PngWrittenChunk& chunk = chunks.emplace_back();
  std::copy(type.begin(), type.end(), chunk.type);
  chunk.data = std::move(data);
}

// A keyword, a NUL, the compression method 0.
Bytes compressedHead(std::string_view keyword) {
  Bytes head(keyword.begin(), keyword.end());
  head.insert(head.end(), {0, 0});
  return head;
}

// sRGB has a mark of its own, which every reader knows; the intent says perceptual, as pictures are drawn.
bool addColour(Chunks& chunks, const Pixels& pixels) {
  const auto* named = std::get_if<NamedSpace>(&pixels.profile);
  if (named != nullptr && named->name == kCGColorSpaceSRGB && pixels.layout.model == CGColorSpaceModel::rgb) {
    add(chunks, "sRGB", {0});
    return true;
  }
  const auto profile = writtenProfile(pixels.profile, pixels.layout.model);
  if (!profile) return false;
  if (profile->empty()) return true;
  Bytes data = compressedHead("ICC profile");
  append(data, deflateAll(*profile));
  add(chunks, "iCCP", std::move(data));
  return true;
}

void addPhysical(Chunks& chunks, std::uint32_t x, std::uint32_t y, std::uint8_t unit) {
  Bytes data;
  appendBigEndian32(data, x);
  appendBigEndian32(data, y);
  data.push_back(unit);
  add(chunks, "pHYs", std::move(data));
}

void addDensity(Chunks& chunks, const Properties& properties) {
  constexpr std::uint8_t kAspectOnly = 0, kMetre = 1;
  const auto density = statedDensity(properties.tree);
  if (density) return addPhysical(chunks, metresFromInches(density->x), metresFromInches(density->y), kMetre);
  if (properties.carrier == nullptr || !properties.carrier->pixelAspect) return;
  const PixelAspect aspect = *properties.carrier->pixelAspect;
  addPhysical(chunks, aspect.x, aspect.y, kAspectOnly);
}

// The keyword in Latin-1, as every kind of text has it; empty when it cannot be.
std::string keywordOf(const CarriedText& text) {
  const Bytes units = utf16FromUtf8(text.keyword, ByteOrder::big);
  std::string keyword;
  for (std::size_t i = 0; i < units.size(); i += 2) {
    if (units[i] != 0) return {};
    keyword += static_cast<char>(units[i + 1]);
  }
  return keyword.size() > 79 ? std::string() : keyword;
}

// ASCII as the oldest kind of text, which everybody reads; anything else as UTF-8.
void addText(Chunks& chunks, const CarriedText& text) {
  constexpr std::size_t kWorthCompressing = 2048;
  const std::string keyword = keywordOf(text);
  if (keyword.empty()) return;
  const bool compressed = text.text.size() > kWorthCompressing;
  const Bytes packed = compressed ? deflateAll(asBytes(text.text)) : Bytes();
  const ByteView stored = compressed ? ByteView(packed) : asBytes(text.text);
  Bytes data = compressedHead(keyword);
  if (isAscii(text.text) && text.language.empty() && text.translatedKeyword.empty()) {
    if (!compressed) data.pop_back();
    append(data, stored);
    add(chunks, compressed ? "zTXt" : "tEXt", std::move(data));
    return;
  }
  data.back() = compressed ? 1 : 0;
  data.push_back(0);  // the method
  for (const std::string& word : {text.language, text.translatedKeyword}) {
    append(data, asBytes(word));
    data.push_back(0);
  }
  append(data, stored);
  add(chunks, "iTXt", std::move(data));
}

CarriedText plainText(std::string_view keyword, std::string_view text) {
  return {
      .keyword = std::string(keyword), .text = std::string(text), .language = {}, .translatedKeyword = {}};
}

// What a tree that kept its {PNG} group says in words, unless the carrier has it.
void addGroupTexts(Chunks& chunks, const Dictionary& tree, const std::vector<CarriedText>& carried) {
  for (const auto& [key, value] : groupOf(tree, kCGImagePropertyPNGDictionary)) {
    const auto* words = value.get<std::string>();
    if (words == nullptr || !isPngGroupKeyword(key) || words->find('\0') != std::string::npos) continue;
    const CarriedText text = plainText(key, *words);
    if (std::find(carried.begin(), carried.end(), text) == carried.end()) addText(chunks, text);
  }
}

void addComment(Chunks& chunks, std::string_view comment) {
  std::string text = utf8FromUnknown(comment);
  std::erase(text, '\0');
  addText(chunks, plainText("Comment", text));
}

void addCarriedChunks(Chunks& chunks, const Properties& properties) {
  if (properties.carrier == nullptr) return;
  for (const CarriedChunk& chunk : properties.carrier->pngChunks) {
    std::string type;
    for (int shift = 24; shift >= 0; shift -= 8) type += static_cast<char>(chunk.type >> shift & 0xFF);
    add(chunks, type, chunk.data);
    chunks.back().afterPixels = chunk.afterPixels;
  }
}

void addXmp(Chunks& chunks, ByteView packet) {
  if (packet.empty()) return;
  Bytes data = compressedHead(kPngXmpKeyword);
  data.insert(data.end(), {0, 0, 0});
  append(data, packet);
  add(chunks, "iTXt", std::move(data));
}

// PNG has no place for IPTC records; this is where other programs look for them.
void addIptc(Chunks& chunks, const MetadataBlocks& blocks) {
  const Bytes block = joinPhotoshop(blocks.iptc, blocks.photoshopResources);
  if (block.empty()) return;
  Bytes data = compressedHead(std::string(kPngRawProfile) + "iptc");
  append(data, deflateAll(asBytes(pngRawProfile("iptc", block))));
  add(chunks, "zTXt", std::move(data));
}

}  // namespace

std::optional<Chunks> pngChunksToWrite(const Pixels& pixels, const Properties* properties) {
  Chunks chunks;
  if (!addColour(chunks, pixels)) return std::nullopt;
  if (properties == nullptr) return chunks;
  auto blocks = writeMetadata(*properties, {pixels.layout.width, pixels.layout.height});
  if (!blocks) return std::nullopt;
  if (!blocks->exif.empty()) add(chunks, "eXIf", std::move(blocks->exif));
  addDensity(chunks, *properties);
  addXmp(chunks, blocks->xmp);
  addIptc(chunks, *blocks);
  addGroupTexts(chunks, properties->tree, blocks->texts);
  for (const std::string& comment : blocks->comments) addComment(chunks, comment);
  for (const CarriedText& text : blocks->texts) addText(chunks, text);
  addCarriedChunks(chunks, *properties);
  return chunks;
}

}  // namespace ostra
