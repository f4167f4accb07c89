#include "tests/faults/matrices.h"
#include "tests/faults/tally.h"
#include "tests/system/error_faults.h"
#include "tests/system/fault_scene.h"

namespace ostra::test {
namespace {

void tryAt(FaultScene& scene, const NamedFault& named, const std::string& at, Tally& tally) {
  scene.prepare();
  Injection injection;
  injection.fault = named.fault;
  const FaultedRun run = scene.run(injection);
  if (!run.struck) return;
  tally.count();
  if (run.leftBehind > 0) tally.untrue(at, "left a process behind");
  const Judgement judgement = scene.judge(run, named.fault.lasting);
  if (!judgement.losses.empty()) tally.lost(at, judgement.losses[0]);
  if (!judgement.untruths.empty()) tally.untrue(at, judgement.untruths[0] + " [" + run.errors + "]");
  if (judgement.isNew) tally.countNew();
  tally.countStrays(scene.strays());
}

bool canStrike(const Fault& fault, const std::string& call) {
  return fault.kind != Fault::Kind::shortWrite || call.find("write") != std::string::npos;
}

}  // namespace

bool runErrors(const Road& road, const std::string& folder) {
  Tally tally("errors", road.name);
  FaultScene scene(road, folder);
  const auto calls = scene.calls(false);
  for (NamedFault named : errorFaults()) {
    for (std::size_t call = 0; call < calls.size(); ++call) {
      if (!canStrike(named.fault, calls[call])) continue;
      named.fault.at = call;
      tryAt(scene, named, named.name + " at call " + std::to_string(call) + " (" + calls[call] + ")", tally);
    }
  }
  tally.print();
  return tally.isGood();
}

}  // namespace ostra::test
