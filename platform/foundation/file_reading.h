#pragma once
#include "platform/foundation/bytes.h"
#include "platform/foundation/url.h"

namespace ostra {

/// The whole contents of a small file of ours, such as a property list. Throws `NSError`; larger than 16 MiB
/// is too large (263).
Bytes readSmallFile(const URL& url);

}  // namespace ostra
