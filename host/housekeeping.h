#pragma once
#include <string>
#include <vector>

namespace ostra {

/// Removes what crashed and failed runs left in the cache folder and in the folders of these pictures, at
/// most once a day. Never fails.
void cleanUpAfterFormerRuns(const std::vector<std::string>& pictures);

}  // namespace ostra
