#include "platform/imageio/codecs/jpeg_written_segments.h"

#include <algorithm>
#include <string_view>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/extended_xmp.h"
#include "platform/imageio/codecs/jpeg_segments.h"
#include "platform/imageio/codecs/written_profile.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/exif_shed.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {
namespace {

using Segments = std::vector<JpegWrittenSegment>;

constexpr int kApp1 = 0xE1, kApp2 = 0xE2, kApp13 = 0xED, kComment = 0xFE;

void add(Segments& segments, int marker, std::string_view head, ByteView block) {
  JpegWrittenSegment& segment = segments.emplace_back();
  segment.marker = marker;
  segment.data.assign(head.begin(), head.end());
  segment.data.insert(segment.data.end(), block.begin(), block.end());
}

// Pieces of at most `room` bytes; none of an empty block.
std::vector<ByteView> pieces(ByteView block, std::size_t room) {
  std::vector<ByteView> result;
  for (; !block.empty(); block = block.subspan(result.back().size()))
    result.push_back(block.first(std::min(block.size(), room)));
  return result;
}

bool addExif(Segments& segments, Bytes block) {
  if (block.empty()) return true;
  const std::size_t room = kJpegSegmentRoom - kJpegExifHead.size();
  if (block.size() > room) {
    auto shed = shedExif(std::move(block), room);
    if (!shed) return false;
    block = std::move(*shed);
  }
  add(segments, kApp1, kJpegExifHead, block);
  return true;
}

void addXmpExtension(Segments& segments, const SplitXmp& split) {
  constexpr std::size_t kNumbers = 32 + 4 + 4;
  std::size_t offset = 0;
  for (const ByteView piece :
       pieces(split.extension, kJpegSegmentRoom - kJpegExtendedXmpHead.size() - kNumbers)) {
    Bytes block(split.name.begin(), split.name.end());
    appendBigEndian32(block, static_cast<std::uint32_t>(split.extension.size()));
    appendBigEndian32(block, static_cast<std::uint32_t>(offset));
    block.insert(block.end(), piece.begin(), piece.end());
    add(segments, kApp1, kJpegExtendedXmpHead, block);
    offset += piece.size();
  }
}

// A packet too large for a segment that cannot be taken apart goes alone; the rest of the metadata stays.
void addXmp(Segments& segments, ByteView packet) {
  const std::size_t room = kJpegSegmentRoom - kJpegXmpHead.size();
  if (packet.empty()) return;
  if (packet.size() <= room) {
    add(segments, kApp1, kJpegXmpHead, packet);
  } else if (const auto split = splitXmp(packet, room)) {
    add(segments, kApp1, kJpegXmpHead, split->packet);
    addXmpExtension(segments, *split);
  }
}

void addPhotoshop(Segments& segments, const MetadataBlocks& blocks) {
  const Bytes block = joinPhotoshop(blocks.iptc, blocks.photoshopResources);
  for (const ByteView piece : pieces(block, kJpegSegmentRoom - kJpegPhotoshopHead.size()))
    add(segments, kApp13, kJpegPhotoshopHead, piece);
}

bool addProfile(Segments& segments, ByteView profile) {
  const auto parts = pieces(profile, kJpegSegmentRoom - kJpegIccHead.size() - 2);
  if (parts.size() > 255) return false;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    std::string head(kJpegIccHead);
    head += static_cast<char>(i + 1);
    head += static_cast<char>(parts.size());
    add(segments, kApp2, head, parts[i]);
  }
  return true;
}

void addComment(Segments& segments, std::string_view comment) {
  if (comment.empty()) add(segments, kComment, {}, {});
  for (const ByteView piece : pieces(asBytes(comment), kJpegSegmentRoom)) add(segments, kComment, {}, piece);
}

// A JPEG has no keywords; a comment that begins with one is better than none.
void addText(Segments& segments, const CarriedText& text) {
  const bool isComment = text.keyword == "Comment";
  addComment(segments, isComment ? text.text : text.keyword + ": " + text.text);
}

}  // namespace

std::optional<Segments> jpegSegmentsToWrite(const Pixels& pixels, const Properties* properties) {
  Segments segments;
  const auto profile = writtenProfile(pixels.profile, pixels.layout.model);
  if (!profile) return std::nullopt;
  MetadataBlocks blocks;
  if (properties != nullptr) {
    auto patched = writeMetadata(*properties, {pixels.layout.width, pixels.layout.height});
    if (!patched) return std::nullopt;
    blocks = std::move(*patched);
  }
  if (!addExif(segments, std::move(blocks.exif))) return std::nullopt;
  addPhotoshop(segments, blocks);
  addXmp(segments, blocks.xmp);
  if (!addProfile(segments, *profile)) return std::nullopt;
  for (const std::string& comment : blocks.comments) addComment(segments, comment);
  for (const CarriedText& text : blocks.texts) addText(segments, text);
  return segments;
}

}  // namespace ostra
