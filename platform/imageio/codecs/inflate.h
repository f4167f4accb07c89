#pragma once
#include <cstddef>
#include <optional>

#include "platform/foundation/bytes.h"

namespace ostra {

/// The contents of a whole zlib stream of at most `limit` bytes; nothing when it is damaged, cut off or
/// larger. What follows the stream is not looked at.
std::optional<Bytes> inflateAll(ByteView stream, std::size_t limit);
/// A zlib stream that holds `bytes`. May throw `std::bad_alloc`.
Bytes deflateAll(ByteView bytes);

}  // namespace ostra
