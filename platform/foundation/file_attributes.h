#pragma once

namespace ostra {

/// Gives the file open at `to` the owner, group, mode, access list and extended attributes of the one open at
/// `from`. Security labels and the flags that file systems keep are given where that is allowed. Attributes
/// of its own that `from` does not have stay. 0, or the errno of what could not be kept, after which `to` has
/// a part of them.
int keepAttributes(int from, int to);

}  // namespace ostra
