#pragma once
#include <string>

#include "platform/foundation/bytes.h"

namespace ostra::test {

/// Why another program cannot open a picture to its end, or nothing. `before` is what the picture was made
/// of: a part that was carried over as it was may be one that a checker minds.
std::string troubleOfOthers(const std::string& path, ByteView before);

}  // namespace ostra::test
