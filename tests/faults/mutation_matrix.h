#pragma once
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/faults/mutator.h"

namespace ostra::test {

/// What became of the mutations under one kind of conversion.
struct MutationTally {
  std::string kind;
  std::size_t mutations = 0, converted = 0, refused = 0;
  std::size_t crashed = 0;    // the program, or the process of one file
  std::size_t hung = 0;       // no end within the patience
  std::size_t forbidden = 0;  // a process of a file asked for what the filter forbids
  std::size_t lost = 0;       // neither the old file nor a whole new one, or something was left over
  std::size_t untrue = 0;     // what was told is not so
  std::size_t drawn = 0,
              opened = 0;  // results that other programs were shown, and those that they could open

  std::size_t failures() const { return crashed + hung + forbidden + lost + untrue + drawn - opened; }
};

struct MutationPlan {
  std::uint32_t seed = 1;
  std::size_t first = 0, count = 0;
  std::size_t perRequest = 400;
  /// Of all results, how many are shown to other programs at least, where there are so many.
  std::size_t shown = 500;
  std::string program;
  std::vector<std::string> environment;
  std::string folder;    // where the files are made
  std::string cache;     // the program's own, where nothing may be left; none to look at where empty
  std::string findings;  // where culprits are kept
  std::chrono::seconds patience{30};
  std::vector<std::string> kinds{"srgb", "invert", "jpg"};
};

/// Converts each mutation by each kind, many in a request, and looks at every file afterwards.
std::vector<MutationTally> runMutations(const MutationPlan& plan, const SourcePictures& pictures);

}  // namespace ostra::test
