#include <csignal>

#include "tests/faults/matrices.h"
#include "tests/faults/tally.h"
#include "tests/system/fault_scene.h"

namespace ostra::test {

bool runDeaths(const Road& road, const std::string& folder) {
  Tally tally("kill", road.name);
  FaultScene scene(road, folder);
  const auto calls = scene.calls(true);
  for (std::size_t call = 0; call < calls.size(); ++call) {
    scene.prepare();
    Injection injection;
    injection.countsAllCalls = true;
    injection.fault = Fault{};
    injection.fault->at = call;
    const FaultedRun run = scene.run(injection);
    const std::string at = "call " + std::to_string(call) + " (" + calls[call] + ")";
    if (run.struck) tally.count();
    if (run.struck != (run.status == 128 + SIGKILL)) tally.untrue(at, "did not die of it");
    if (run.leftBehind > 0) tally.untrue(at, "left a process behind");
    const Judgement judgement = scene.judge(std::nullopt);
    if (!judgement.losses.empty()) tally.lost(at, judgement.losses[0]);
    if (judgement.isNew) tally.countNew();
    tally.countStrays(scene.strays());
  }
  tally.print();
  return tally.isGood();
}

}  // namespace ostra::test
