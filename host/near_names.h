#pragma once
#include <cstddef>
#include <string>
#include <vector>

namespace ostra {

/// The names that somebody who typed `typed` may have meant, best first, at most `most`: those that hold it
/// or are held by it, then those that differ by few letters. Letter case does not count.
std::vector<std::string> nearNames(const std::string& typed, const std::vector<std::string>& names,
                                   std::size_t most);

}  // namespace ostra
