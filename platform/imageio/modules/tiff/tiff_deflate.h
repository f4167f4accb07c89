#pragma once
#include <cstdint>

#include "platform/foundation/bytes.h"

namespace ostra {

/// Whether a zlib stream holds exactly so many bytes and its sum is right. The library takes a stream that
/// went wrong for a good one as long as it gave enough bytes.
bool isSoundDeflate(ByteView stream, std::uint64_t size);

}  // namespace ostra
