#pragma once
#include <string>

#include "host/integration/menu.h"

namespace ostra {

/// The text in the first of the user's languages that it has.
std::string inUsersLanguage(const MenuText& text);

}  // namespace ostra
