#pragma once
#include <cstddef>
#include <optional>

#include "platform/foundation/bytes.h"

namespace ostra {

/// The Exif block in at most `limit` bytes (a JPEG segment holds 65527): laid out again without gaps, and, as
/// long as that is too much, without its largest value; opaque ones (maker note, unknown tags, undefined
/// blobs) go before those with a meaning, the orientation goes last. A maker note that stays keeps its
/// offset, which its inner offsets may be counted from. Nothing when the block is malformed or not even its
/// orientation fits.
std::optional<Bytes> shedExif(Bytes exif, std::size_t limit);

}  // namespace ostra
