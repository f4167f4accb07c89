#pragma once
#include <string>
#include <vector>

namespace ostra {

/// The paths in a file, separated by NUL bytes; "-" is standard input. Empty ones are skipped. Throws
/// `UsageError`.
std::vector<std::string> readFileList(const std::string& file);

}  // namespace ostra
