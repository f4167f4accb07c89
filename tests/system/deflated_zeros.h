#pragma once
#include <cstddef>

#include "platform/foundation/bytes.h"

namespace ostra::test {

/// So many zero bytes as a zlib stream, a thousandth as long.
Bytes deflatedZeros(std::size_t size);

}  // namespace ostra::test
