#pragma once
#include <string>

#include "tests/system/road.h"

namespace ostra::test {

/// Each prints its lines of the table and says whether nothing was lost and nothing untrue was told.
/// `folder` lies on the file system that is tested.

/// SIGKILL before every system call.
bool runDeaths(const Road& road, const std::string& folder);
/// Errors and short writes at every file call, once and from then on.
bool runErrors(const Road& road, const std::string& folder);
/// The file system of `image`, mounted at `folder`, is cut off before every file call and mounted again. With
/// `flushesAreEmpty` the program's flushes do nothing, and the answer is whether that lost something.
bool runPowerLosses(const Road& road, const std::string& folder, const std::string& image,
                    bool flushesAreEmpty);
/// The same deaths of other programs. Their losses are no failure.
bool runPeers(const std::string& folder);
/// Four instances on the same 500 files.
bool runInstances(const std::string& folder, unsigned seed);

}  // namespace ostra::test
