#pragma once
#include <cstdint>
#include <optional>
#include <span>

#include "platform/imageio/codecs/bmff_boxes.h"

namespace ostra {

/// The part of the stored pixels that is the picture.
struct HeifCrop {
  std::uint32_t x = 0, y = 0, width = 0, height = 0;
};

/// How stored pixels are shown: a part of them, turned and mirrored.
struct HeifTransforms {
  HeifCrop crop;
  /// As Exif counts, 1 to 8.
  int orientation = 1;
  /// Whether a property says so.
  bool isTurned = false;
};

/// What `clap`, `irot` and `imir` properties, applied in their order, make of pixels of this size. Nothing
/// when they ask for pixels that are not there.
std::optional<HeifTransforms> heifTransforms(std::span<const BmffBox> properties, std::uint32_t width,
                                             std::uint32_t height);

/// The properties that say an orientation: first quarters of a turn to the left, then the mirror: 0 exchanges
/// top and bottom, 1 left and right.
struct HeifTurn {
  std::uint8_t quarters = 0;
  std::optional<std::uint8_t> mirror;
};
HeifTurn heifTurn(int orientation);

}  // namespace ostra
