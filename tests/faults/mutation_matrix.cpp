#include "tests/faults/mutation_matrix.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <span>

#include "tests/faults/findings.h"
#include "tests/faults/mutation_judge.h"
#include "tests/faults/outside_opening.h"
#include "tests/faults/picture_parts.h"
#include "tests/faults/watched_request.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {
namespace {

/// Replacements that were begun and neither put into their place nor removed.
std::size_t leftovers(const std::string& cache) {
  std::size_t count = 0;
  if (!std::filesystem::exists(cache)) return count;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(cache))
    if (entry.path().filename().string().starts_with(".ostra-")) ++count;
  return count;
}

/// One kind of conversion on one load of mutations.
class Load {
 public:
  Load(const MutationPlan& plan, const std::vector<Mutation>& mutations, MutationTally& tally)
      : plan_(plan), mutations_(mutations), tally_(tally) {}

  /// A request that ends before its time goes on behind its culprit.
  void convert() {
    for (std::size_t done = 0; done < mutations_.size();) done += convertFrom(done);
  }

 private:
  std::size_t convertFrom(std::size_t first) {
    const TemporaryFolder folder(plan_.folder);
    const std::span<const Mutation> rest = std::span(mutations_).subspan(first);
    WatchedRequest request{plan_.program, plan_.environment, tally_.kind, folder.path(), {}};
    for (const Mutation& mutation : rest) {
      writeFile(folder.path(mutation.name), mutation.bytes);
      request.names.push_back(mutation.name);
    }
    const std::size_t leftBefore = leftovers(plan_.cache);
    const RequestEnd end = request.run(plan_.patience);
    const Findings findings(plan_, tally_.kind);
    const std::size_t served = judgeRequest(folder, rest, end, tally_, findings);
    // One that was ended could not tidy up.
    if ((end.status == 0 || end.status == 1) && leftovers(plan_.cache) != leftBefore) {
      ++tally_.lost;
      findings.tell("something was left in " + plan_.cache);
    }
    showResults(folder, rest.first(served), end, findings);
    return served;
  }

  void showResults(const TemporaryFolder& folder, std::span<const Mutation> mutations, const RequestEnd& end,
                   const Findings& findings) {
    std::vector<std::size_t> converted;
    for (std::size_t i = 0; i < mutations.size(); ++i)
      if (end.files[i].kind == FileEnd::Kind::converted) converted.push_back(i);
    Dice dice(plan_.seed, mutations.front().index);
    for (std::size_t due = dueHere(mutations.size()); due > 0 && !converted.empty(); --due) {
      const auto chosen = converted.begin() + static_cast<std::ptrdiff_t>(dice.below(converted.size()));
      const Mutation& mutation = mutations[*chosen];
      show(folder.path(end.files[*chosen].written), mutation, findings);
      converted.erase(chosen);
    }
  }

  void show(const std::string& path, const Mutation& mutation, const Findings& findings) {
    // Otherwise it has been judged.
    if (!std::filesystem::exists(path) || !isWhole(readFile(path))) return;
    const std::string trouble = troubleOfOthers(path, mutation.bytes);
    ++tally_.drawn;
    if (trouble.empty()) ++tally_.opened;
    if (!trouble.empty()) findings.keep(mutation, "another program cannot open it: " + trouble);
  }

  /// Of so many files as much as belongs to them, and not less.
  std::size_t dueHere(std::size_t files) const {
    const std::size_t all = plan_.count * plan_.kinds.size();
    // Not every request has results enough.
    return (2 * plan_.shown * files + all - 1) / std::max<std::size_t>(all, 1);
  }

  const MutationPlan& plan_;
  const std::vector<Mutation>& mutations_;
  MutationTally& tally_;
};

void tellProgress(std::size_t done, std::size_t all, const std::vector<MutationTally>& tallies) {
  std::size_t converted = 0, opened = 0, failures = 0;
  for (const MutationTally& tally : tallies) {
    converted += tally.converted;
    opened += tally.opened;
    failures += tally.failures();
  }
  std::fprintf(stderr, "%zu of %zu mutations: %zu conversions, %zu of them opened by others, %zu failures\n",
               done, all, converted, opened, failures);
}

}  // namespace

std::vector<MutationTally> runMutations(const MutationPlan& plan, const SourcePictures& pictures) {
  std::vector<MutationTally> tallies;
  for (const std::string& kind : plan.kinds) tallies.push_back({.kind = kind});
  for (std::size_t done = 0; done < plan.count;) {
    const std::size_t size = std::min(plan.perRequest, plan.count - done);
    std::vector<Mutation> mutations;
    for (std::size_t i = 0; i < size; ++i)
      mutations.push_back(mutationOf(pictures, plan.seed, plan.first + done + i));
    for (MutationTally& tally : tallies) Load(plan, mutations, tally).convert();
    done += size;
    if (done % (10 * plan.perRequest) == 0 && done < plan.count) tellProgress(done, plan.count, tallies);
  }
  return tallies;
}

}  // namespace ostra::test
