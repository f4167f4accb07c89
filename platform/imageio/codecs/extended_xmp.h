#pragma once
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/bytes.h"

namespace ostra {

/// XMP in a JPEG (ISO 16684, storage in files): a packet that a segment does not hold has a second part,
/// which goes in segments of its own and is named in the first.

/// The packet that both parts make; nothing when one of them is not well-formed. Throws `LimitExceeded`
/// beyond `limit` bytes: each description takes along the namespaces around it.
std::optional<Bytes> joinXmp(ByteView packet, ByteView extension, std::size_t limit);

struct SplitXmp {
  Bytes packet;
  Bytes extension;
  std::string name;
};
/// The packet in two parts, the first of at most `room` bytes: whole descriptions, the largest first, go to
/// the second. Nothing when that cannot be done.
std::optional<SplitXmp> splitXmp(ByteView packet, std::size_t room);

}  // namespace ostra
