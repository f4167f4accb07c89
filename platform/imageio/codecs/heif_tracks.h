#pragma once
#include <cstdint>

#include "platform/foundation/bytes.h"

namespace ostra {

/// The most samples that a track of pictures or video has; 0 for a file without such a track.
std::uint32_t heifTrackSamples(ByteView file);

}  // namespace ostra
