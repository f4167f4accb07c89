#pragma once
#include <string>
#include <string_view>

namespace ostra {

/// The running program, by its absolute path without links. Throws `UsageError` when it is no longer there.
std::string programPath();
/// A folder of the program's own data: beside the executable in a build, in the shared data once installed.
std::string dataFolder(std::string_view name);

}  // namespace ostra
