#include "platform/imageio/codecs/png_written_chunks.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/inflate.h"
#include "platform/imageio/codecs/png_text.h"
#include "platform/imageio/codecs/written_profile.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/metadata/text_encoding.h"

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

void addDensity(Chunks& chunks, const Dictionary& tree) {
  const auto density = statedDensity(tree);
  if (!density) return;
  constexpr double kMetresAnInch = 0.0254;
  Bytes data;
  for (const double dots : {density->x, density->y})
    appendBigEndian32(
        data, static_cast<std::uint32_t>(std::clamp(std::round(dots / kMetresAnInch), 1.0, 2147483647.0)));
  data.push_back(1);  // the unit: metre
  add(chunks, "pHYs", std::move(data));
}

// ASCII as the oldest kind of text, which everybody reads; anything else as UTF-8.
void addText(Chunks& chunks, std::string_view keyword, std::string_view text) {
  constexpr std::size_t kWorthCompressing = 2048;
  if (keyword.empty() || keyword.size() > 79 || !isAscii(keyword)) return;
  const bool compressed = text.size() > kWorthCompressing;
  Bytes data = isAscii(text) && !compressed ? Bytes(keyword.begin(), keyword.end()) : compressedHead(keyword);
  if (isAscii(text)) {
    if (!compressed) data.push_back(0);
    append(data, compressed ? ByteView(deflateAll(asBytes(text))) : asBytes(text));
    add(chunks, compressed ? "zTXt" : "tEXt", std::move(data));
    return;
  }
  data.back() = compressed ? 1 : 0;
  data.insert(data.end(), {0, 0, 0});  // the method, no language, no translated keyword
  append(data, compressed ? ByteView(deflateAll(asBytes(text))) : asBytes(text));
  add(chunks, "iTXt", std::move(data));
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
  addDensity(chunks, properties->tree);
  addXmp(chunks, blocks->xmp);
  addIptc(chunks, *blocks);
  for (const std::string& comment : blocks->comments) addText(chunks, "Comment", comment);
  if (properties->carrier != nullptr) {
    for (const auto& [keyword, text] : properties->carrier->texts) addText(chunks, keyword, text);
  }
  return chunks;
}

}  // namespace ostra
