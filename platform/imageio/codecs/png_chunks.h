#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/foundation/bytes.h"
#include "platform/graphics/color_space.h"

namespace ostra {

inline constexpr std::array<std::uint8_t, 8> kPngSignature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

/// Four letters as a number, such as "IHDR".
constexpr std::uint32_t pngType(const char (&letters)[5]) {
  std::uint32_t type = 0;
  for (int i = 0; i < 4; ++i) type = type << 8 | static_cast<std::uint8_t>(letters[i]);
  return type;
}

struct PngChunk {
  std::uint32_t type = 0;
  ByteView data;
  ByteView whole;  // with length, type and checksum

  bool isCritical() const { return (type >> 24 & 0x20) == 0; }
  /// Whether the checksum is right.
  bool isIntact() const;
};

/// The chunks of a file in their order, up to its end or to the first that is cut off or none.
class PngChunkWalk {
 public:
  explicit PngChunkWalk(ByteView file) : rest_(file.subspan(kPngSignature.size())) {}
  std::optional<PngChunk> next();

 private:
  ByteView rest_;
};

/// The first chunk, as the standard allows it.
struct PngHeader {
  std::uint32_t width = 0, height = 0;
  unsigned bits = 0;
  unsigned colourType = 0;
  bool interlaced = false;

  bool isPalette() const { return colourType == 3; }
  bool isGray() const { return colourType == 0 || colourType == 4; }
  bool hasAlphaChannel() const { return colourType == 4 || colourType == 6; }
  CGColorSpaceModel model() const {
    return isGray() ? CGColorSpaceModel::monochrome : CGColorSpaceModel::rgb;
  }
};
std::optional<PngHeader> readPngHeader(ByteView file);

/// What the chunks say beyond the header, pixels not looked at.
struct PngStructure {
  PngHeader header;
  std::uint32_t frames = 1;
  /// A transparent colour or palette entry, in a chunk before the pixels.
  bool hasTransparency = false;

  bool hasAlpha() const { return header.hasAlphaChannel() || hasTransparency; }
};
/// Nothing when there is no header. `maximumFrames` ends the counting.
std::optional<PngStructure> readPngStructure(ByteView file, std::uint32_t maximumFrames);

}  // namespace ostra
