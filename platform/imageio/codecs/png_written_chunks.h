#pragma once
#include <optional>
#include <vector>

#include "platform/imageio/codec_door.h"

namespace ostra {

/// A chunk to write as it is.
struct PngWrittenChunk {
  std::uint8_t type[5] = {};  // four letters and a NUL
  Bytes data;
  bool afterPixels = false;
};

/// The chunks around the pixels: what the colours mean, then density and metadata. Nothing when the profile
/// or a metadata block is malformed.
std::optional<std::vector<PngWrittenChunk>> pngChunksToWrite(const Pixels& pixels,
                                                             const Properties* properties);

}  // namespace ostra
