#pragma once
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"
#include "tests/system/file_state.h"
#include "tests/system/installed_program.h"
#include "tests/system/road.h"

namespace ostra::test {

/// What became of the pictures after a run.
struct Judgement {
  /// Files that were there and are neither the whole old nor the whole new one, in words.
  std::vector<std::string> losses;
  /// What the program's end said and is not so.
  std::vector<std::string> untruths;
  /// A new name holds a part of the new picture: documented for a death, and nothing that was there before.
  bool isNewNamePartial = false;
  bool isNew = false;

  bool isGood() const { return losses.empty() && untruths.empty(); }
};

/// The pictures of a road in a folder, to be converted with a fault again and again.
class FaultScene {
 public:
  /// Everything is made in `parent`, on whose file system the faults happen. Throws when the program cannot
  /// convert them without a fault.
  FaultScene(const Road& road, const std::string& parent);

  /// Fresh pictures; what former runs left is removed.
  void prepare();
  /// The arming and the road's own part of `injection` are filled in.
  FaultedRun run(Injection injection) const;
  /// `status` is the program's where it lived to tell.
  Judgement judge(const std::optional<FaultedRun>& ended, bool lasting = false) const;

  std::string source() const { return folder_->path(road_.source); }
  std::string destination() const { return folder_->path(road_.destination); }
  /// The counted calls of a run without a fault.
  std::vector<std::string> calls(bool all);
  /// Entries beside the pictures and in the cache that a run left.
  int strays() const;

 private:
  struct States {
    std::optional<FileState> source, destination;
  };
  States states() const { return {fileStateAt(source()), fileStateAt(destination())}; }
  void judgeEnd(const FaultedRun& ended, bool lasting, Judgement& judgement) const;

  const Road& road_;
  std::string parent_;
  TemporaryFolder home_;
  InstalledProgram program_;
  std::unique_ptr<TemporaryFolder> folder_;
  Bytes picture_;
  States old_, new_;
};

}  // namespace ostra::test
