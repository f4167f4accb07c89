#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/imageio/codec.h"

namespace ostra {

struct RoundTrip {
  Pixels read, readBack;
};

/// What every codec's target does with any bytes: open, decode and read properties within small limits, and
/// write what came out again. Ends the process when a picture that was read whole cannot be read back.
/// Nothing when no picture was read, or when the format is only read.
std::optional<RoundTrip> roundTripCodec(std::string_view type, ByteView file);

}  // namespace ostra
