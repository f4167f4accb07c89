#pragma once
#include <string_view>

#include "platform/foundation/bytes.h"

namespace ostra::test {

/// A number of four bytes.
Bytes big32(std::size_t value);
/// A box of any content, as JPEG 2000 and JPEG XL have them.
Bytes box(std::string_view type, const Bytes& content);

}  // namespace ostra::test
