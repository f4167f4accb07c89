#pragma once
#include <string>

namespace ostra {

/// What `--version` prints.
std::string versionText();

}  // namespace ostra
