#pragma once
#include <cstdint>

#include "platform/imageio/codec_door.h"

namespace ostra {

/// As `encodeTiff`; a file of more than `mostClassic` bytes becomes a BigTIFF.
Answer<Bytes> writeTiff(const Pixels& pixels, const Properties* properties, std::uint64_t mostClassic);

}  // namespace ostra
