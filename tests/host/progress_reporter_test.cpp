#include "host/progress_reporter.h"

#include <chrono>
#include <optional>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/dispatch/main_loop.h"
#include "platform/dispatch/queue.h"
#include "platform/foundation/service.h"
#include "tests/doubles/renderer.h"

namespace ostra {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class ProgressRenderer : public test::RecordingRenderer {
 public:
  using RecordingRenderer::RecordingRenderer;
  bool progress(const Progress& progress) override {
    EXPECT_TRUE(isMainThread());
    drawn.push_back(progress.title + " " + std::to_string(progress.done) + "/" +
                    std::to_string(progress.total) + " " + progress.name);
    return !putAway;
  }
  std::vector<std::string> drawn;
  bool putAway = false;
};

class ProgressReporterTest : public testing::Test {
 protected:
  /// Turns the main queue for a while.
  static void turn(std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end) {
      MainLoop::drain();
      std::this_thread::sleep_for(5ms);
    }
  }
  void TearDown() override { MainLoop::drain(); }

  /// Turns the main queue until so much was drawn, for half a minute at most.
  void turnUntilDrawn(std::size_t count) {
    const auto end = std::chrono::steady_clock::now() + 30s;
    while (renderer_.drawn.size() < count && std::chrono::steady_clock::now() < end) turn(10ms);
  }

  test::CallLog log_;
  ProgressRenderer renderer_{log_};
  Service<Renderer>::Override override_{renderer_};
};

TEST_F(ProgressReporterTest, ShowsTheItemInWorkAndTakesTheDisplayAway) {
  std::optional<ProgressReporter> reporter(std::in_place, ReportedWork{3, "Invert", 100ms});
  reporter->itemBegan()(1, "b.png");
  turnUntilDrawn(1);
  EXPECT_THAT(renderer_.drawn, ElementsAre("Invert 1/3 b.png"));
  reporter.reset();
  EXPECT_THAT(renderer_.drawn, ElementsAre("Invert 1/3 b.png", " 3/3 "));
}

TEST_F(ProgressReporterTest, ShowsNothingForWorkThatIsDoneSooner) {
  {
    const ProgressReporter reporter({3, "", 20s});
    for (std::size_t i = 0; i < 3; ++i) reporter.itemBegan()(i, "x");
    turn(200ms);
  }
  turn(200ms);
  EXPECT_THAT(renderer_.drawn, IsEmpty());
}

TEST_F(ProgressReporterTest, IsPatientFromTheFirstItemOn) {
  const ProgressReporter reporter({1, "", 1000ms});
  turn(1200ms);
  EXPECT_EQ(reporter.worked(), 0ms);
  const auto began = std::chrono::steady_clock::now();
  reporter.itemBegan()(0, "a.png");
  turnUntilDrawn(1);
  EXPECT_GE(std::chrono::steady_clock::now() - began, 1000ms);
  EXPECT_GE(reporter.worked(), 1000ms);
  EXPECT_THAT(renderer_.drawn, ElementsAre(" 0/1 a.png"));
}

TEST_F(ProgressReporterTest, RemembersThatTheDisplayWasPutAway) {
  const ProgressReporter reporter({3, "", 10ms});
  reporter.itemBegan()(0, "a.png");
  turnUntilDrawn(1);
  EXPECT_FALSE(reporter.wasPutAway());
  renderer_.putAway = true;
  reporter.itemBegan()(1, "b.png");
  turnUntilDrawn(2);
  renderer_.putAway = false;
  reporter.itemBegan()(2, "c.png");
  turnUntilDrawn(3);
  EXPECT_TRUE(reporter.wasPutAway());
}

TEST_F(ProgressReporterTest, DrawsSeldomHoweverFastTheItemsGoBy) {
  const ProgressReporter reporter({100000, "", 100ms});
  const auto end = std::chrono::steady_clock::now() + 500ms;
  std::size_t index = 0;
  while (std::chrono::steady_clock::now() < end) {
    reporter.itemBegan()(index++, "x");
    MainLoop::drain();
  }
  EXPECT_GE(renderer_.drawn.size(), 1u);
  EXPECT_LE(renderer_.drawn.size(), 6u);
}

TEST_F(ProgressReporterTest, MayBeToldOfAnItemAfterItsEnd) {
  std::optional<ProgressReporter> reporter(std::in_place, ReportedWork{2, "", 10ms});
  const auto itemBegan = reporter->itemBegan();
  reporter.reset();
  itemBegan(1, "late.png");
  turn(150ms);
  EXPECT_THAT(renderer_.drawn, IsEmpty());
}

}  // namespace
}  // namespace ostra
