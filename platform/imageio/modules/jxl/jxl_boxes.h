#pragma once
#include "platform/imageio/limits.h"
#include "platform/imageio/metadata/carrier.h"

namespace ostra {

/// Exif and XMP out of a file's boxes, unpacked where they are packed. A box that is damaged is left out.
/// Throws `LimitExceeded` beyond the limit, and `std::bad_alloc`.
Carrier readJxlBoxes(ByteView file, std::size_t limit);

}  // namespace ostra
