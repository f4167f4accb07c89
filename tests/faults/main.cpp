#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "tests/faults/matrices.h"
#include "tests/support/fault_injector.h"

namespace {

using namespace ostra::test;

const Road* roadNamed(const std::string& name) {
  const auto* found =
      std::find_if(kRoads.begin(), kRoads.end(), [&](const Road& road) { return name == road.name; });
  return found == kRoads.end() ? nullptr : found;
}

int explain() {
  std::fputs(
      "usage: fault_matrices kill|errors FOLDER ROAD\n"
      "       fault_matrices power|no-flush FOLDER ROAD IMAGE\n"
      "       fault_matrices peers FOLDER\n"
      "       fault_matrices instances FOLDER SEED\n"
      "       fault_matrices roads\n"
      "       fault_matrices ready\n"
      "status: 0 nothing lost, 1 something lost, 2 usage and other errors, 3 not possible here\n",
      stderr);
  return 2;
}

/// Nothing when the words make no sense.
std::optional<bool> perform(const std::vector<std::string>& words) {
  const std::string& matrix = words.at(0);
  if (matrix == "peers" && words.size() == 2) return runPeers(words[1]);
  if (matrix == "instances" && words.size() == 3)
    return runInstances(words[1], static_cast<unsigned>(std::strtoul(words[2].c_str(), nullptr, 10)));
  const Road* road = words.size() > 2 ? roadNamed(words[2]) : nullptr;
  if (road == nullptr) return std::nullopt;
  if (matrix == "kill" && words.size() == 3) return runDeaths(*road, words[1]);
  if (matrix == "errors" && words.size() == 3) return runErrors(*road, words[1]);
  if ((matrix == "power" || matrix == "no-flush") && words.size() == 4)
    return runPowerLosses(*road, words[1], words[3], matrix == "no-flush");
  return std::nullopt;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.empty()) return explain();
  if (words[0] == "roads") {
    for (const Road& road : kRoads) std::puts(road.name);
    return 0;
  }
  if (!canInjectFaults()) {
    std::fputs("skipped: this machine does not let a test change another program's calls\n", stderr);
    return 3;
  }
  if (words[0] == "ready") return 0;
  try {
    const auto good = perform(words);
    if (!good) return explain();
    return *good ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  }
}
