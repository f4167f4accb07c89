#include "platform/imageio/codecs/gif_written_blocks.h"

#include <cmath>
#include <string_view>

#include "platform/imageio/codecs/gif_extensions.h"
#include "platform/imageio/codecs/written_profile.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {
namespace {

constexpr std::uint8_t kExtension = 0x21;

// What a GIF means whose colours nobody explains.
bool isSrgb(const ProfileRecord& profile) {
  const auto* named = std::get_if<NamedSpace>(&profile);
  return named != nullptr && named->name == kCGColorSpaceSRGB;
}

bool addProfile(Bytes& blocks, const Pixels& pixels) {
  const auto profile = writtenProfile(pixels.profile, pixels.layout.model);
  if (!profile) return false;
  // Gray levels are written as those of sRGB.
  const bool saysMore = pixels.layout.model == CGColorSpaceModel::rgb && !isSrgb(pixels.profile);
  if (profile->empty() || !saysMore) return true;
  blocks.insert(blocks.end(), {kExtension, kGifApplication, static_cast<std::uint8_t>(kGifProfile.size())});
  blocks.insert(blocks.end(), kGifProfile.begin(), kGifProfile.end());
  appendSubBlocks(blocks, *profile);
  return true;
}

void addComment(Bytes& blocks, std::string_view comment) {
  blocks.insert(blocks.end(), {kExtension, kGifComment});
  appendSubBlocks(blocks, asBytes(comment));
}

// A GIF has no keywords; a comment that begins with one is better than none.
void addText(Bytes& blocks, const CarriedText& text) {
  const bool isComment = text.keyword == "Comment";
  addComment(blocks, isComment ? text.text : text.keyword + ": " + text.text);
}

}  // namespace

std::optional<Bytes> gifBlocksToWrite(const Pixels& pixels, const Properties* properties) {
  Bytes blocks;
  if (!addProfile(blocks, pixels)) return std::nullopt;
  if (properties == nullptr) return blocks;
  const auto metadata = writeMetadata(*properties, {pixels.layout.width, pixels.layout.height});
  if (!metadata) return std::nullopt;
  if (!metadata->xmp.empty()) {
    const Bytes extension = gifXmpExtension(metadata->xmp);
    blocks.insert(blocks.end(), extension.begin(), extension.end());
  }
  for (const std::string& comment : metadata->comments) addComment(blocks, comment);
  for (const CarriedText& text : metadata->texts) addText(blocks, text);
  return blocks;
}

std::uint8_t gifAspect(const Properties* properties) {
  if (properties == nullptr || !properties->carrier || !properties->carrier->pixelAspect) return 0;
  const PixelAspect aspect = *properties->carrier->pixelAspect;
  if (aspect.x == 0) return 0;
  const double byte = std::round(64.0 * aspect.y / aspect.x) - 15;
  return byte >= 1 && byte <= 255 ? static_cast<std::uint8_t>(byte) : std::uint8_t{0};
}

}  // namespace ostra
