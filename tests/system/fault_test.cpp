#include <cerrno>
#include <csignal>
#include <filesystem>
#include <memory>

#include <gtest/gtest.h>

#include "tests/system/error_faults.h"
#include "tests/system/fault_scene.h"

namespace ostra::test {
namespace {

class Faults : public testing::TestWithParam<Road> {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    if (!canInjectFaults()) GTEST_SKIP() << "this machine does not let a test change another program's calls";
    scene_ = std::make_unique<FaultScene>(GetParam(), std::filesystem::temp_directory_path().string());
    calls_ = scene_->calls(false);
    ASSERT_GT(calls_.size(), 20U) << "the calls are not seen";
  }

  FaultedRun runWith(const Fault& fault) {
    scene_->prepare();
    Injection injection;
    injection.fault = fault;
    return scene_->run(injection);
  }

  // Every picture is the old or the new one, with its attributes.
  void expectGood(const Judgement& judgement, const std::string& after) const {
    for (const std::string& words : judgement.losses) ADD_FAILURE() << after << ": " << words;
    for (const std::string& words : judgement.untruths) ADD_FAILURE() << after << ": " << words;
  }

  std::string describe(std::size_t call) const {
    return "call " + std::to_string(call) + " (" + calls_[call] + ")";
  }

  std::unique_ptr<FaultScene> scene_;
  std::vector<std::string> calls_;
};

TEST_P(Faults, ADeathAtAnyCallLeavesEveryPictureWholeAndNoProcessBehind) {
  std::size_t deaths = 0;
  for (std::size_t call = 0; call < calls_.size(); ++call) {
    Fault death;
    death.at = call;
    const FaultedRun run = runWith(death);
    if (run.struck) {
      ++deaths;
      ASSERT_EQ(run.status, 128 + SIGKILL) << describe(call);
    }
    EXPECT_EQ(run.leftBehind, 0) << describe(call);
    expectGood(scene_->judge(std::nullopt), "killed at " + describe(call));
  }
  // A thread may make a call less now and then, and no more.
  EXPECT_GE(deaths + 5, calls_.size());
}

TEST_P(Faults, AnErrorFromAnyCallLeavesEveryPictureWholeAndTheStatusTrue) {
  for (NamedFault named : errorFaults()) {
    const int error = named.fault.error;
    const bool isUsual = error == EIO || error == ENOSPC || error == EPERM || error == EINTR;
    if (named.fault.lasting || !isUsual) continue;  // the rest is for script/faults
    for (std::size_t call = 0; call < calls_.size(); ++call) {
      named.fault.at = call;
      const FaultedRun run = runWith(named.fault);
      expectGood(scene_->judge(run), named.name + " at " + describe(call));
    }
  }
}

TEST(FaultInjector, SeesAProcessThatIsLeftBehind) {
  if (!canInjectFaults()) GTEST_SKIP() << "this machine does not let a test change another program's calls";
  EXPECT_EQ(runWithFault({"sh", "-c", "sleep 60 &"}, {}).leftBehind, 1);
}

INSTANTIATE_TEST_SUITE_P(Roads, Faults, testing::ValuesIn(kRoads),
                         [](const testing::TestParamInfo<Road>& road) { return testNameOf(road.param); });

}  // namespace
}  // namespace ostra::test
