#pragma once
#include <cstddef>
#include <cstdint>

#include "platform/imageio/codec.h"

namespace ostra {

/// What every codec's target does with any bytes: open, decode and read properties within small limits, and
/// write what came out again. Ends the process when a picture that was read whole cannot be read back.
void roundTripCodec(std::string_view type, ByteView file);

}  // namespace ostra
