#pragma once
#include <array>
#include <vector>

#include "platform/imageio/codec_door.h"
#include "platform/imageio/codecs/tga_header.h"

namespace ostra {

/// Red, green, blue, alpha.
using TgaColour = std::array<std::uint8_t, 4>;

/// A picture taken apart, nothing of its pixels read.
struct TgaPicture {
  TgaHeader header;
  std::vector<TgaColour> map;
  ByteView data;  // the stored pixels and what follows them

  /// Gray pixels, or a map of opaque grays.
  bool isGray() const;
};

/// Nothing when the colour map is cut off.
std::optional<TgaPicture> takeTgaApart(ByteView file, const TgaHeader& header);

/// The pixels, straight alpha last. Pixels that are missing, a run beyond the last one and an index without a
/// colour are faults.
Answer<Pixels> decodeTgaPixels(const TgaPicture& picture, const Limits& limits, std::size_t fileSize);

}  // namespace ostra
