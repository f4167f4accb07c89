#pragma once
#include <cstddef>
#include <optional>

#include "platform/foundation/bytes.h"
#include "platform/imageio/limits.h"

namespace ostra {

/// The contents of a whole zlib stream; nothing when it is damaged or cut off. What follows the stream is not
/// looked at. Throws `LimitExceeded` with `name` beyond `limit` bytes. May throw `std::bad_alloc`.
std::optional<Bytes> inflateAll(ByteView stream, std::size_t limit, LimitName name);
/// A zlib stream that holds `bytes`. May throw `std::bad_alloc`.
Bytes deflateAll(ByteView bytes);

}  // namespace ostra
