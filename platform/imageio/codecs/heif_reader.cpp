#include "platform/imageio/codecs/heif_reader.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/imageio/codecs/exif_colour.h"
#include "platform/imageio/codecs/inflate.h"
#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/exif_block.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

// A number says how many bytes stand before the block's byte order mark: none, or the mark of JPEG's
// segments.
Bytes withoutHead(Bytes content) {
  BmffFields fields(content);
  const std::uint64_t skipped = fields.number32();
  ByteView block = fields.rest();
  block = block.subspan(std::min<std::uint64_t>(skipped, block.size()));
  constexpr std::string_view mark("Exif\0\0", 6);
  if (block.size() >= mark.size() && std::equal(mark.begin(), mark.end(), block.begin()))
    block = block.subspan(mark.size());
  return Bytes(block.begin(), block.end());
}

/// libheif lets metadata describe the first part of a picture that it has put together.
bool describesPrimary(const HeifMeta& meta, std::uint32_t id) {
  const auto describes = [&](const HeifReference& reference) {
    if (reference.type != bmffType("cdsc") || reference.from != id) return false;
    return std::any_of(reference.to.begin(), reference.to.end(), [&](std::uint32_t to) {
      return to == meta.primary || meta.refers(bmffType("dimg"), meta.primary, to);
    });
  };
  return std::any_of(meta.references.begin(), meta.references.end(), describes);
}

bool tellsOrientation(ByteView exif) {
  Dictionary tree;
  readExif(exif, tree);
  return tree.contains(kCGImagePropertyOrientation);
}

}  // namespace

HeifReader::HeifReader(FileBytes file, HeifFile heif, std::string_view type)
    : file_(file), heif_(std::move(heif)) {
  opened_.type = type;
  opened_.count = heif_.count;
  opened_.width = heif_.transforms.crop.width;
  opened_.height = heif_.transforms.crop.height;
  opened_.bits = static_cast<std::uint8_t>(heif_.bits);
  opened_.components = static_cast<std::uint8_t>((heif_.isGray ? 1 : 3) + (heif_.hasAlpha ? 1 : 0));
}

// The properties turn the picture; what Exif says beside them is only repeated from the camera. Where neither
// speaks there is nothing to tell.
Answer<Properties> HeifReader::properties(std::uint32_t index, const Limits& limits) {
  if (index != 0) return Fault{FaultKind::damaged};
  PictureFacts facts;
  facts.width = opened_.width;
  facts.height = opened_.height;
  facts.depth = heif_.bits;
  facts.model = heif_.isGray ? CGColorSpaceModel::monochrome : CGColorSpaceModel::rgb;
  facts.hasAlpha = heif_.hasAlpha;
  Dictionary tree = pictureTree(facts, profile(limits));
  Carrier carrier;
  carrier.exif = exif(limits);
  carrier.xmp = metadata(bmffType("mime"), "application/rdf+xml", limits);
  if (heif_.transforms.isTurned || tellsOrientation(carrier.exif))
    tree.emplace(kCGImagePropertyOrientation, std::int64_t{heif_.transforms.orientation});
  return readMetadata(std::move(carrier), std::move(tree));
}

ProfileRecord HeifReader::profile(const Limits& limits) const {
  ProfileRecord profile = heifProfile(heif_, limits);
  return std::holds_alternative<Untagged>(profile) ? exifColour(exif(limits)) : profile;
}

Layout HeifReader::layout(bool wide, bool alpha, bool premultiplied) const {
  Layout layout;
  layout.width = opened_.width;
  layout.height = opened_.height;
  layout.bitsPerComponent = wide ? 16 : 8;
  layout.model = heif_.isGray ? CGColorSpaceModel::monochrome : CGColorSpaceModel::rgb;
  const unsigned components = heif_.isGray ? (alpha ? 2 : 1) : 4;
  layout.bitsPerPixel = static_cast<std::uint8_t>(components * layout.bitsPerComponent);
  layout.bytesPerRow = std::size_t{layout.width} * (layout.bitsPerPixel / 8u);
  CGImageAlphaInfo info = heif_.isGray ? CGImageAlphaInfo::none : CGImageAlphaInfo::noneSkipLast;
  if (alpha) info = premultiplied ? CGImageAlphaInfo::premultipliedLast : CGImageAlphaInfo::last;
  layout.bitmapInfo = static_cast<CGBitmapInfo>(info) | (wide ? kCGBitmapByteOrder16Little : 0);
  return layout;
}

/// The first item of a kind that describes the primary picture.
Bytes HeifReader::metadata(std::uint32_t type, std::string_view contentType, const Limits& limits) const {
  for (const auto& [id, item] : heif_.meta.items) {
    if (item.type != type || item.contentType != contentType) continue;
    if (!describesPrimary(heif_.meta, id)) continue;
    Bytes content = heifItemContent(file_, heif_.meta, item, limits);
    if (item.contentEncoding.empty()) return content;
    if (item.contentEncoding == "deflate")
      return inflateAll(content, limits.metadataBytes, LimitName::metadataBytes).value_or(Bytes());
  }
  return {};
}

Bytes HeifReader::exif(const Limits& limits) const {
  return withoutHead(metadata(bmffType("Exif"), {}, limits));
}

}  // namespace ostra
