#pragma once
#include <string>

#include "platform/foundation/bytes.h"

namespace ostra {

/// The MD5 digest (RFC 1321) in upper-case hexadecimal digits: how a JPEG names the second part of its XMP. A
/// name, no protection.
std::string md5Name(ByteView bytes);

}  // namespace ostra
