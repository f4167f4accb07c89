#include "platform/imageio/codecs/jpeg_segments.h"

#include <algorithm>
#include <map>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/extended_xmp.h"
#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {
namespace {

struct Segment {
  std::uint8_t marker = 0;
  ByteView data;
};

constexpr std::size_t kMostStrayBytes = std::size_t{1} << 20;

bool standsAlone(std::uint8_t marker) { return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8); }

// The segments up to the first scan.
class SegmentWalk {
 public:
  explicit SegmentWalk(ByteView file) : rest_(file.subspan(2)) {}

  /// Whether it ended at more stray bytes than any writer leaves.
  bool isLost() const { return stray_ > kMostStrayBytes; }

  std::optional<Segment> next() {
    while (findMarker()) {
      const std::uint8_t marker = rest_[1];
      rest_ = rest_.subspan(2);
      if (standsAlone(marker)) continue;
      if (marker == 0xD9 || marker == 0xDA || rest_.size() < 2) return std::nullopt;
      // A length that does not even count itself: decoders take the segment for empty.
      const std::size_t length = std::max<std::size_t>(bigEndian16(rest_, 0), 2);
      if (length > rest_.size()) return std::nullopt;
      const Segment segment{marker, rest_.subspan(2, length - 2)};
      rest_ = rest_.subspan(length);
      return segment;
    }
    return std::nullopt;
  }

 private:
  // Skips what stands between segments, fill bytes among it, as the decoder does.
  bool findMarker() {
    for (; rest_.size() >= 2 && (rest_[0] != 0xFF || rest_[1] == 0xFF || rest_[1] == 0);
         rest_ = rest_.subspan(1)) {
      if (++stray_ > kMostStrayBytes) return false;
    }
    return rest_.size() >= 2;
  }
  ByteView rest_;
  std::size_t stray_ = 0;
};

bool isFrame(std::uint8_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

std::optional<JpegFrame> readFrame(const Segment& segment) {
  if (segment.data.size() < 6) return std::nullopt;
  JpegFrame frame;
  frame.bits = segment.data[0];
  frame.height = bigEndian16(segment.data, 1);
  frame.width = bigEndian16(segment.data, 3);
  frame.components = segment.data[5];
  frame.progressive = (segment.marker & 3) == 2;
  return frame;
}

std::optional<JpegDensity> readJfif(ByteView data) {
  if (data.size() < 12 || !asText(data).starts_with(std::string_view{"JFIF\0", 5})) return std::nullopt;
  return JpegDensity{data[5], data[6], data[7], bigEndian16(data, 8), bigEndian16(data, 10)};
}

// A profile in numbered segments, which may come in any order.
class ProfileParts {
 public:
  void add(ByteView part) {
    if (part.size() < 2) return;
    const unsigned number = part[0], total = part[1];
    if (total_ != 0 && total != total_) consistent_ = false;
    total_ = total;
    if (!parts_.emplace(number, part.subspan(2)).second) consistent_ = false;
  }
  Bytes joined(std::size_t limit, LimitName& exceeded) const {
    Bytes profile;
    if (!consistent_ || parts_.size() != total_) return {};
    unsigned expected = 1;
    for (const auto& [number, part] : parts_) {
      if (number != expected++) return {};
      if (part.size() > limit - profile.size()) {
        exceeded = LimitName::profileBytes;
        return {};
      }
      profile.insert(profile.end(), part.begin(), part.end());
    }
    return profile;
  }

 private:
  std::map<unsigned, ByteView> parts_;
  unsigned total_ = 0;
  bool consistent_ = true;
};

// The second part of an XMP packet, in segments that tell a name, the whole size and their offset.
class ExtensionParts {
 public:
  void add(ByteView segment) {
    constexpr std::size_t kHead = kNameSize + 4 + 4;
    if (segment.size() <= kHead) return;
    Extension& extension = extensions_[std::string(asText(segment.first(kNameSize)))];
    extension.size = bigEndian32(segment, kNameSize);
    extension.parts.emplace(bigEndian32(segment, kNameSize + 4), segment.subspan(kHead));
  }
  // The whole extension that the packet names, or nothing. The packet is looked through once, however many
  // extensions there are.
  Bytes namedIn(const Bytes& packet) const {
    constexpr std::string_view kMark = "HasExtendedXMP", kDigits = "0123456789ABCDEFabcdef";
    const std::string_view text = asText(packet);
    for (std::size_t at = text.find(kMark); at != std::string_view::npos; at = text.find(kMark, at)) {
      at += kMark.size();
      const std::size_t name = std::min(text.find_first_of(kDigits, at), text.size());
      const auto found = extensions_.find(text.substr(name, kNameSize));
      if (found != extensions_.end()) return found->second.joined();
    }
    return {};
  }

 private:
  static constexpr std::size_t kNameSize = 32;
  struct Extension {
    std::size_t size = 0;
    std::map<std::uint32_t, ByteView> parts;

    Bytes joined() const {
      Bytes bytes;
      for (const auto& [offset, part] : parts) {
        if (offset != bytes.size() || part.size() > size - offset) return {};
        bytes.insert(bytes.end(), part.begin(), part.end());
      }
      return bytes.size() == size ? bytes : Bytes();
    }
  };
  std::map<std::string, Extension, std::less<>> extensions_;
};

class Collector {
 public:
  explicit Collector(const Limits& limits) : metadataLeft_(limits.metadataBytes) {}

  void take(const Segment& segment, JpegSegments& segments) {
    const std::uint8_t marker = segment.marker;
    if (isFrame(marker) && !segments.frame) segments.frame = readFrame(segment);
    if (marker == 0xE0 && !segments.jfif) segments.jfif = readJfif(segment.data);
    if (marker == 0xE1) takeMetadata(segment.data, segments);
    if (marker == 0xE2) takeProfileOrIndex(segment.data, segments);
    if (marker == 0xED) {
      if (const auto rest = after(segment.data, kJpegPhotoshopHead)) append(segments.photoshop, *rest);
    }
    if (marker == 0xFE && fits(segment.data)) segments.comments.emplace_back(asText(segment.data));
  }
  // What lay in parts.
  void finish(JpegSegments& segments, const Limits& limits) const {
    segments.exceeded = exceeded_;
    segments.icc = profile_.joined(limits.profileBytes, segments.exceeded);
    const Bytes extension = extension_.namedIn(segments.xmp);
    if (extension.empty()) return;
    try {
      if (auto whole = joinXmp(segments.xmp, extension, limits.metadataBytes))
        segments.xmp = std::move(*whole);
    } catch (const LimitExceeded& exceeded) {
      segments.exceeded = exceeded.limit;
    }
  }

 private:
  static std::optional<ByteView> after(ByteView data, std::string_view head) {
    if (!asText(data).starts_with(head)) return std::nullopt;
    return data.subspan(head.size());
  }
  bool fits(ByteView block) {
    if (block.size() > metadataLeft_) exceeded_ = LimitName::metadataBytes;
    if (exceeded_ != LimitName::none) return false;
    metadataLeft_ -= block.size();
    return true;
  }
  void append(Bytes& to, ByteView block) {
    if (fits(block)) to.insert(to.end(), block.begin(), block.end());
  }
  // Some writers leave a second, older block behind; readers take the first. Some cut a block that one
  // segment does not hold; what follows then does not begin like a block.
  void takeExif(ByteView block, JpegSegments& segments) {
    const std::string_view start = asText(block.first(std::min<std::size_t>(block.size(), 4)));
    const bool begins = start == std::string_view{"II*\0", 4} || start == std::string_view{"MM\0*", 4};
    exifGoesOn_ = segments.exif.empty() || (exifGoesOn_ && !begins);
    if (exifGoesOn_) append(segments.exif, block);
  }
  void takeMetadata(ByteView data, JpegSegments& segments) {
    if (const auto rest = after(data, kJpegExifHead)) takeExif(*rest, segments);
    if (const auto rest = after(data, kJpegXmpHead); rest && segments.xmp.empty())
      append(segments.xmp, *rest);
    if (const auto rest = after(data, kJpegExtendedXmpHead); rest && fits(*rest)) extension_.add(*rest);
  }
  void takeProfileOrIndex(ByteView data, JpegSegments& segments) {
    if (const auto rest = after(data, kJpegIccHead)) profile_.add(*rest);
    if (const auto rest = after(data, kJpegMpfHead))
      segments.pictures = std::max(segments.pictures, countJpegViews(*rest));
  }

  std::size_t metadataLeft_;
  LimitName exceeded_ = LimitName::none;
  bool exifGoesOn_ = false;
  ProfileParts profile_;
  ExtensionParts extension_;
};

}  // namespace

JpegSegments readJpegSegments(ByteView file, const Limits& limits) {
  JpegSegments segments;
  if (file.size() < 2) return segments;
  Collector collector(limits);
  SegmentWalk walk(file);
  while (const auto segment = walk.next()) collector.take(*segment, segments);
  if (walk.isLost()) return {};
  collector.finish(segments, limits);
  segments.pictures = std::min(segments.pictures, std::max(limits.frames, 1u));
  return segments;
}

}  // namespace ostra
