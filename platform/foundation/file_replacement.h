#pragma once
#include <string>

#include "platform/foundation/url.h"

namespace ostra {

/// Puts the file at `newItem` in the place of `original`, as `NSFileManager::replaceItemAtURL` promises, and
/// waits until that is on the disk. On success `newItem` is gone; after a failure both files are as they
/// were, but for attributes of the new one. Throws `NSError`.
void replaceFile(const URL& original, const std::string& newItem);

}  // namespace ostra
