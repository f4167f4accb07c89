#pragma once
#include <cstddef>
#include <cstdint>

#include "platform/foundation/bytes.h"
#include "platform/imageio/codec_door.h"

namespace ostra {

/// The first `size` bytes of a file, fewer when it is shorter or cannot be read.
Bytes readBeginning(int file, std::size_t size);

/// The bytes of a regular file, read into memory: a mapping would end the process when somebody shortens the
/// file meanwhile. A fault when it is no regular file, is larger than `limit`, or cannot be read. May throw
/// `std::bad_alloc`.
Answer<SharedBytes> readContents(int file, std::uint64_t limit);

}  // namespace ostra
