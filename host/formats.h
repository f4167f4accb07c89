#pragma once
#include <string>

namespace ostra {

/// What `ostra formats` prints: a line of fields, separated by tabs, for every format: its name, type,
/// extensions and MIME types, what is done with it, what is counted in it, and what this machine lacks for
/// it.
std::string formatList();

}  // namespace ostra
