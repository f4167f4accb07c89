#pragma once
#include <vector>

#include "platform/imageio/codec_door.h"
#include "platform/imageio/codecs/nearest_colour.h"
#include "platform/imageio/straight_rows.h"

namespace ostra {

/// A pixel as GIF knows it.
struct GifPixel {
  Rgb colour{};
  bool visible = true;
};

/// The rows of a gray or RGB picture in 8 bits. Pixels of less than half opacity are not visible and black.
class GifRows {
 public:
  explicit GifRows(const Pixels& pixels);
  /// Valid until the next call.
  const std::vector<GifPixel>& row(std::uint32_t y);

 private:
  const Pixels& pixels_;
  StraightRows straight_;
  std::vector<std::uint8_t> grays_;  // of gray pictures: what each level is in sRGB
  std::vector<GifPixel> row_;
};

}  // namespace ostra
