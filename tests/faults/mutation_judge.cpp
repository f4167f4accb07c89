#include "tests/faults/mutation_judge.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "tests/faults/picture_parts.h"

namespace ostra::test {
namespace {

using Kind = FileEnd::Kind;

/// The last words of a program.
std::string endOf(const std::string& errors) {
  constexpr std::size_t kMost = 300;
  return errors.empty() ? "" : ": ... " + errors.substr(errors.size() - std::min(errors.size(), kMost));
}

class Judge {
 public:
  Judge(const TemporaryFolder& folder, std::span<const Mutation> mutations, const RequestEnd& end,
        MutationTally& tally, const Findings& findings)
      : folder_(folder), mutations_(mutations), end_(end), tally_(tally), findings_(findings) {
    for (const std::string& name : folder.names()) left_.insert(name);
  }

  std::size_t judge() {
    const std::size_t served = judgeProgram();
    for (std::size_t i = 0; i < mutations_.size(); ++i) judgeFile(mutations_[i], end_.files[i], i < served);
    for (const std::string& name : left_) {
      ++tally_.lost;
      findings_.tell(name + " was left in the folder");
    }
    tally_.mutations += served;
    return served;
  }

 private:
  /// How many files have had their turn.
  std::size_t judgeProgram() {
    const auto none = std::find_if(end_.files.begin(), end_.files.end(),
                                   [](const FileEnd& file) { return file.kind == Kind::none; });
    const auto ended = static_cast<std::size_t>(none - end_.files.begin());
    if (end_.leftBehind > 0) {
      ++tally_.untrue;
      findings_.tell(std::to_string(end_.leftBehind) + " processes outlived the program");
    }
    const Mutation& culprit = mutations_[std::min(ended, mutations_.size() - 1)];
    if (end_.hung) {
      ++tally_.hung;
      findings_.keep(culprit, "the program hangs");
    } else if (end_.status != 0 && end_.status != 1) {
      ++tally_.crashed;
      findings_.keep(culprit,
                     "the program ends with status " + std::to_string(end_.status) + endOf(end_.errors));
    } else {
      judgeWords(none == end_.files.end(), culprit);
      return mutations_.size();
    }
    return std::min(ended + 1, mutations_.size());
  }

  /// Of a program that ended by itself.
  void judgeWords(bool everyFileEnded, const Mutation& silent) {
    std::multiset<std::string> refused;
    for (std::size_t i = 0; i < mutations_.size(); ++i)
      if (end_.files[i].kind == Kind::refused) refused.insert(mutations_[i].name);
    const std::multiset<std::string> told(end_.toldAsFailed.begin(), end_.toldAsFailed.end());
    if (!everyFileEnded) untrue(silent, "nothing was told of it");
    if (told != refused) {
      ++tally_.untrue;
      findings_.tell(std::to_string(told.size()) + " files were told as failed in the end, and " +
                     std::to_string(refused.size()) + " failed");
    }
    if ((end_.status == 1) != !refused.empty()) {
      ++tally_.untrue;
      findings_.tell("status " + std::to_string(end_.status) + " with " + std::to_string(refused.size()) +
                     " failures");
    }
  }

  void judgeFile(const Mutation& mutation, const FileEnd& file, bool served) {
    if (file.decoderCrashed) {
      ++tally_.crashed;
      findings_.keep(mutation, "its decoder crashed");
    }
    if (file.decoderWasForbidden) {
      ++tally_.forbidden;
      findings_.keep(mutation, "its decoder was forbidden something");
    }
    const bool here = left_.erase(mutation.name) > 0;
    const bool same = here && readFile(folder_.path(mutation.name)) == mutation.bytes;
    if (file.kind == Kind::converted) {
      ++tally_.converted;
      judgeConverted(mutation, file.written, here, same);
    } else if (!same && !mayBeNew(mutation, file, served)) {
      ++tally_.lost;
      findings_.keep(mutation, here ? "it was changed and not told as converted" : "it is gone");
    }
    if (file.kind == Kind::refused) ++tally_.refused;
  }

  void judgeConverted(const Mutation& mutation, const std::string& written, bool here, bool same) {
    if (written == mutation.name) {
      if (here && isWhole(readFile(folder_.path(written)))) return;
      ++tally_.lost;
      return findings_.keep(mutation, "what was written over it is no whole picture");
    }
    if (!same) {
      ++tally_.lost;
      findings_.keep(mutation, "it was changed, and told as written beside it");
    }
    const bool ours = written.starts_with(std::to_string(mutation.index) + ".");
    if (!ours || left_.erase(written) == 0) return untrue(mutation, "there is no " + written);
    if (isWhole(readFile(folder_.path(written)))) return;
    ++tally_.lost;
    findings_.keep(mutation, "what was written beside it is no whole picture");
  }

  /// A program that was ended may have exchanged the picture and not said so yet.
  bool mayBeNew(const Mutation& mutation, const FileEnd& file, bool served) const {
    return file.kind == Kind::none && served && end_.status >= 128 &&
           std::filesystem::exists(folder_.path(mutation.name)) &&
           isWhole(readFile(folder_.path(mutation.name)));
  }

  void untrue(const Mutation& mutation, const std::string& trouble) {
    ++tally_.untrue;
    findings_.keep(mutation, trouble);
  }

  const TemporaryFolder& folder_;
  const std::span<const Mutation> mutations_;
  const RequestEnd& end_;
  MutationTally& tally_;
  const Findings& findings_;
  std::set<std::string> left_;  // in the folder, and not accounted for
};

}  // namespace

std::size_t judgeRequest(const TemporaryFolder& folder, std::span<const Mutation> mutations,
                         const RequestEnd& end, MutationTally& tally, const Findings& findings) {
  return Judge(folder, mutations, end, tally, findings).judge();
}

}  // namespace ostra::test
