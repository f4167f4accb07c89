#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "tests/faults/mutation_matrix.h"
#include "tests/support/temporary_folder.h"

// Damaged pictures by the thousand, each through three conversions: none may cost more than itself.

namespace {

using namespace ostra::test;

int explain() {
  std::fputs("usage: mutations FINDINGS COUNT [SEED [FIRST]]\n", stderr);
  return 2;
}

std::size_t numberAt(const std::vector<std::string>& words, std::size_t index, std::size_t otherwise) {
  return index < words.size() ? std::strtoull(words[index].c_str(), nullptr, 10) : otherwise;
}

void print(const MutationTally& tally) {
  std::printf("%-8s %9zu %9zu %9zu %8zu %6zu %9zu %6zu %6zu %6zu of %zu\n", tally.kind.c_str(),
              tally.mutations, tally.converted, tally.refused, tally.crashed, tally.hung, tally.forbidden,
              tally.lost, tally.untrue, tally.opened, tally.drawn);
}

int perform(const std::vector<std::string>& words) {
  const TemporaryFolder folder;
  const InstalledProgram program(folder.path());
  program.installModules();
  MutationPlan plan;
  plan.findings = words[0];
  plan.count = numberAt(words, 1, 0);
  plan.seed = static_cast<std::uint32_t>(numberAt(words, 2, plan.seed));
  plan.first = numberAt(words, 3, 0);
  plan.program = program.path();
  plan.environment = program.environment();
  plan.folder = folder.path();
  plan.cache = program.home() + "/cache";
  const char* collection = std::getenv("OSTRA_CORPUS");
  const bool given = collection != nullptr && *collection != 0;
  const SourcePictures pictures = given ? SourcePictures::collected(collection, program, folder.path())
                                        : SourcePictures::made(folder.path());
  std::printf("mutations %zu to %zu of seed %u, of %s\n", plan.first, plan.first + plan.count - 1, plan.seed,
              pictures.description().c_str());
  std::fflush(stdout);
  const auto tallies = runMutations(plan, pictures);
  std::printf("%-8s %9s %9s %9s %8s %6s %9s %6s %6s %s\n", "kind", "mutations", "converted", "refused",
              "crashed", "hung", "forbidden", "lost", "untrue", "opened by others");
  std::size_t failures = 0;
  for (const MutationTally& tally : tallies) {
    print(tally);
    failures += tally.failures();
  }
  return failures == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.size() < 2 || words.size() > 4 || numberAt(words, 1, 0) == 0) return explain();
  try {
    return perform(words);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  }
}
