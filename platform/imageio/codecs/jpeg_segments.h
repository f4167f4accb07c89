#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/bytes.h"
#include "platform/imageio/limits.h"

namespace ostra {

inline constexpr std::string_view kJpegExifHead{"Exif\0\0", 6};
inline constexpr std::string_view kJpegXmpHead{"http://ns.adobe.com/xap/1.0/\0", 29};
inline constexpr std::string_view kJpegExtendedXmpHead{"http://ns.adobe.com/xmp/extension/\0", 35};
inline constexpr std::string_view kJpegIccHead{"ICC_PROFILE\0", 12};
inline constexpr std::string_view kJpegPhotoshopHead{"Photoshop 3.0\0", 14};
inline constexpr std::string_view kJpegMpfHead{"MPF\0", 4};
/// What a segment holds after its length.
inline constexpr std::size_t kJpegSegmentRoom = 65533;

/// The first frame header.
struct JpegFrame {
  std::uint32_t width = 0, height = 0;
  unsigned bits = 0, components = 0;
  bool progressive = false;
};

struct JpegDensity {
  unsigned majorVersion = 1, minorVersion = 1;
  unsigned unit = 0;  // 0 none, 1 inch, 2 centimetre
  unsigned x = 0, y = 0;
};

/// What the segments before the first scan say.
struct JpegSegments {
  std::optional<JpegFrame> frame;
  std::optional<JpegDensity> jfif;
  Bytes exif, xmp, icc;
  Bytes photoshop;                    // all segments joined, without their heads
  std::vector<std::string> comments;  // byte by byte
  std::uint32_t pictures = 1;
  LimitName exceeded = LimitName::none;
};

/// Walks from marker to marker, as far as they can be followed. A profile of which a segment is missing is
/// left out; so is what goes beyond a limit, which is told. No frame where a megabyte of stray bytes comes
/// first.
JpegSegments readJpegSegments(ByteView file, const Limits& limits);

/// The full views that a multi-picture index (CIPA DC-007) lists, the first included: panoramas, stereo,
/// other angles. Previews, gain maps and everything else that goes with one view do not count. 1 for a
/// malformed index.
std::uint32_t countJpegViews(ByteView index);

}  // namespace ostra
