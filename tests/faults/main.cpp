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

std::vector<Road> allRoads() {
  std::vector<Road> roads(kRoads.begin(), kRoads.end());
  roads.insert(roads.end(), kRoadsOfFormats.begin(), kRoadsOfFormats.end());
  return roads;
}

std::optional<Road> roadNamed(const std::string& name) {
  for (const Road& road : allRoads()) {
    if (name == road.name) return road;
  }
  return std::nullopt;
}

int printRoads(bool all) {
  for (const Road& road : kRoads) std::puts(road.name);
  if (!all) return 0;
  for (const Road& road : kRoadsOfFormats) std::puts(road.name);
  return 0;
}

int explain() {
  std::fputs(
      "usage: fault_matrices kill|errors FOLDER ROAD\n"
      "       fault_matrices power|no-flush FOLDER ROAD IMAGE\n"
      "       fault_matrices peers FOLDER\n"
      "       fault_matrices instances FOLDER SEED\n"
      "       fault_matrices roads [all]\n"
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
  const auto road = words.size() > 2 ? roadNamed(words[2]) : std::nullopt;
  if (!road) return std::nullopt;
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
  if (words[0] == "roads") return printRoads(words.size() > 1 && words[1] == "all");
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
