#pragma once
#include <string>

#include "desktop/extensions/menu.h"

namespace ostra::menu {

/// Starts the program with an action for some pictures, whose paths end with a NUL each, and does not wait.
/// Tells on standard error when that fails.
void startConversion(const Menu& menu, const Entry& entry, const std::string& paths);

}  // namespace ostra::menu
