#pragma once
#include <optional>

#include "platform/foundation/bytes.h"

namespace ostra::test {

/// Where the packed bytes of a whole PNG chunk begin: pixels, a profile or a text; 0 for every other part.
std::size_t packedBegin(ByteView chunk);
/// What lies packed there; what can be read of it when it is only a piece. Nothing when it is too large.
std::optional<Bytes> unpacked(ByteView chunk);
/// Puts other bytes into their place and tells the new length. The checksum is left as it was.
void repack(Bytes& chunk, ByteView plain);

}  // namespace ostra::test
