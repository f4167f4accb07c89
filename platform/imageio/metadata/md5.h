#pragma once
#include <string>

#include "platform/foundation/bytes.h"

namespace ostra {

/// The MD5 digest (RFC 1321), 16 bytes, by which Photoshop blocks tell whether their IPTC records were
/// changed. A name, no protection.
Bytes md5(ByteView bytes);
/// The same in upper-case hexadecimal digits: how a JPEG names the second part of its XMP.
std::string md5Name(ByteView bytes);

}  // namespace ostra
