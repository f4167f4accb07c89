#pragma once
#include <string>

#include "platform/foundation/bytes.h"

namespace ostra {

/// The text of big-endian UTF-16 units up to the first NUL, in UTF-8. Halves of pairs that stand alone are
/// left out.
std::string iccUtf16Text(ByteView units);

/// The text of bytes up to the first NUL, in UTF-8. Those beyond ASCII count as Latin-1.
std::string iccAsciiText(ByteView bytes);

}  // namespace ostra
