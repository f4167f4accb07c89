#pragma once
#include "platform/foundation/error.h"
#include "platform/foundation/url.h"

namespace ostra {

/// The error of a write that was given up because the file at `url` is no longer the one that was opened.
NSError changedFileError(const URL& url);

/// The path of a file URL. Throws the error of an unknown scheme otherwise.
const std::string& filePath(const URL& url, FileAccess access);

}  // namespace ostra
