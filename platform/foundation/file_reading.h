#pragma once
#include "platform/foundation/bytes.h"
#include "platform/foundation/url.h"

namespace ostra {

/// The whole contents of a small file, such as a profile. Throws `NSError`; one of more than `most` bytes is
/// too large (263).
Bytes readSmallFile(const URL& url, std::size_t most = std::size_t{16} << 20);

/// No property list of ours comes near it; and the library walks lists by recursion, which this bounds.
inline constexpr std::size_t kLargestPropertyList = std::size_t{256} << 10;

}  // namespace ostra
