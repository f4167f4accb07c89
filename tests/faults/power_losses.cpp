#include <csignal>

#include "tests/faults/matrices.h"
#include "tests/faults/mounted_image.h"
#include "tests/faults/tally.h"
#include "tests/system/fault_scene.h"

namespace ostra::test {
namespace {

/// One way of losing power, tried at every call and after the end.
class PowerLosses {
 public:
  PowerLosses(const MountedImage& disk, FaultScene& scene, Tally& tally, bool flushesAreEmpty, bool withLog)
      : disk_(disk), scene_(scene), tally_(tally), flushesAreEmpty_(flushesAreEmpty), withLog_(withLog) {}

  void tryAt(std::size_t call, const std::string& name) {
    scene_.prepare();
    disk_.flush();
    Injection injection;
    injection.flushesAreEmpty = flushesAreEmpty_;
    injection.fault = Fault{};
    injection.fault->kind = Fault::Kind::pause;
    injection.fault->at = call;
    injection.fault->meanwhile = [this](pid_t program) {
      disk_.cutOff(withLog_);
      kill(program, SIGKILL);
    };
    const FaultedRun run = scene_.run(injection);
    if (!run.struck) disk_.cutOff(withLog_);
    disk_.mountAgain();
    tell(run, "power lost at call " + std::to_string(call) + " (" + name + ")" +
                  (withLog_ ? ", log written" : ""));
  }

 private:
  void tell(const FaultedRun& run, const std::string& at) {
    tally_.count();
    const Judgement judgement = scene_.judge(std::nullopt);
    if (judgement.isNew) tally_.countNew();
    // What the program called done, before the power went, is on the disk.
    const bool isForgotten = !run.struck && run.status == 0 && !judgement.isNew;
    if (!judgement.losses.empty()) {
      tally_.lost(at, judgement.losses[0]);
    } else if (isForgotten) {
      tally_.lost(at, "done, but not on the disk");
    }
  }

  const MountedImage& disk_;
  FaultScene& scene_;
  Tally& tally_;
  bool flushesAreEmpty_;
  bool withLog_;
};

}  // namespace

bool runPowerLosses(const Road& road, const std::string& folder, const std::string& image,
                    bool flushesAreEmpty) {
  Tally tally(flushesAreEmpty ? "no-flush" : "power", road.name);
  const MountedImage disk(image, folder);
  FaultScene scene(road, folder);
  auto calls = scene.calls(false);
  calls.emplace_back("after the end");
  calls.emplace_back("after the end");
  calls.emplace_back("after the end");
  for (const bool withLog : {false, true}) {
    PowerLosses losses(disk, scene, tally, flushesAreEmpty, withLog);
    for (std::size_t call = 0; call < calls.size(); ++call) {
      // Without flushes the question is only whether the check would see a loss: some calls will do.
      constexpr std::size_t kStep = 4;
      if (flushesAreEmpty && call % kStep != 0 && call + 1 != calls.size()) continue;
      losses.tryAt(call, calls[call]);
    }
  }
  tally.print();
  return flushesAreEmpty ? tally.losses() > 0 : tally.isGood();
}

}  // namespace ostra::test
