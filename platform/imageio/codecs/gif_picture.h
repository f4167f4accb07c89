#pragma once
#include <optional>
#include <vector>

#include "platform/imageio/codec_door.h"
#include "platform/imageio/codecs/nearest_colour.h"

namespace ostra {

/// A picture as one frame of a GIF stores it.
struct GifPicture {
  std::uint32_t left = 0, top = 0, width = 0, height = 0;
  std::vector<Rgb> palette;  // 1 to 256 entries
  std::optional<std::uint8_t> transparent;
  Bytes entries;
};

/// The palette of a picture and the entry of each pixel: its own colours where a palette holds them, which
/// loses nothing but opacity between none and full, else chosen ones, each pixel getting the nearest. Colours
/// around which everything is transparent may take all 256 entries: only their rectangle is stored then.
GifPicture gifPicture(const Pixels& pixels);

}  // namespace ostra
