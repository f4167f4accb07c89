#pragma once
#include <cstdint>

#include "platform/imageio/codec_door.h"

namespace ostra {

/// How a decoder of our own lays pixels out: gray, gray and alpha, or RGB with a fourth component, which is
/// straight alpha or skipped; 8 or 16 bits each, rows without padding.
Layout plainLayout(std::uint32_t width, std::uint32_t height, unsigned bits, CGColorSpaceModel model,
                   bool alpha);

/// Programs that know no alpha leave its bytes 0. So a picture of such a layout that has colours and would be
/// wholly transparent is made opaque: a conversion would lose all of it.
void makeOpaqueIfBlank(Layout& layout, std::uint8_t* pixels);

/// `value` of `most` as a sample of `full`, rounded to the nearest. `most` is not 0.
inline std::uint16_t scaledSample(std::uint32_t value, std::uint32_t most, std::uint32_t full) {
  return static_cast<std::uint16_t>((std::uint64_t{value} * full + most / 2) / most);
}

}  // namespace ostra
