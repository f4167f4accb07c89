#pragma once
#include <string>

#include "platform/appkit/save_panel.h"

namespace ostra {

/// Where a file goes that the user called `path`: there, when the panel allows the type of its extension;
/// else under that name with the extension of the proposed name, or that of the first allowed type that has
/// one.
std::string placeOfAllowedType(const NSSavePanel& panel, const std::string& path);

}  // namespace ostra
