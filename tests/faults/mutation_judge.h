#pragma once
#include <span>

#include "tests/faults/findings.h"
#include "tests/faults/watched_request.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {

/// Compares the folder with what was in it before and with what the program told. How many files of the
/// request have had their turn: all of them, or those up to the one that ended the program.
std::size_t judgeRequest(const TemporaryFolder& folder, std::span<const Mutation> mutations,
                         const RequestEnd& end, MutationTally& tally, const Findings& findings);

}  // namespace ostra::test
