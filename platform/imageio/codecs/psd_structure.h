#pragma once
#include <cstdint>
#include <optional>

#include "platform/foundation/bytes.h"
#include "platform/graphics/color_space.h"

namespace ostra {

enum class PsdMode { bitmap = 0, gray = 1, indexed = 2, rgb = 3, cmyk = 4, duotone = 8, lab = 9 };

struct PsdStructure {
  PsdMode mode = PsdMode::rgb;
  bool isLarge = false;  // a PSB
  std::uint32_t width = 0, height = 0;
  unsigned bits = 8;
  unsigned channels = 0;
  ByteView palette;    // 256 reds, 256 greens, 256 blues; empty unless indexed
  ByteView resources;  // the Photoshop block
  /// The merged picture: its compression, two bytes, and the channels. Empty when the file ends before it.
  ByteView pixels;
  /// Whether the first channel beyond the colours is the transparency of the merged picture.
  bool hasTransparency = false;
  /// The palette's transparent entry.
  std::optional<std::uint8_t> transparentEntry;
  /// False when the file says that its merged picture is none.
  bool hasMergedPicture = true;

  unsigned colours() const;
  /// Of what is decoded: CMYK keeps no transparency, it lies on white.
  bool hasAlpha() const;
  /// Of what is decoded: Lab becomes RGB.
  CGColorSpaceModel model() const;
};

/// Nothing when the header or the length of a section is malformed.
std::optional<PsdStructure> readPsdStructure(ByteView file);

}  // namespace ostra
