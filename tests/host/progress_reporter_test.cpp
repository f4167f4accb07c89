#include "host/progress_reporter.h"

#include <chrono>
#include <optional>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/appkit/renderer.h"
#include "platform/dispatch/main_loop.h"
#include "platform/dispatch/queue.h"
#include "platform/foundation/service.h"

namespace ostra {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class ProgressRenderer : public Renderer {
 public:
  void activate() override {}
  void beep() override {}
  void run(const NSAlert&) override {}
  SavePanelAnswer run(const NSSavePanel&) override { return {}; }
  bool present(const std::shared_ptr<NSViewController>&, const std::string&) override { return false; }
  void withdraw() override {}
  void progress(const Progress& progress) override {
    EXPECT_TRUE(isMainThread());
    drawn.push_back(std::to_string(progress.done) + "/" + std::to_string(progress.total) + " " +
                    progress.name);
  }
  std::vector<std::string> drawn;
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

  ProgressRenderer renderer_;
  Service<Renderer>::Override override_{renderer_};
};

TEST_F(ProgressReporterTest, ShowsTheItemInWorkAndTakesTheDisplayAway) {
  std::optional<ProgressReporter> reporter(3);
  reporter->itemBegan()(1, "b.png");
  turn(400ms);
  EXPECT_THAT(renderer_.drawn, ElementsAre("1/3 b.png"));
  reporter.reset();
  EXPECT_THAT(renderer_.drawn, ElementsAre("1/3 b.png", "3/3 "));
}

TEST_F(ProgressReporterTest, ShowsNothingForWorkThatIsDoneAtOnce) {
  {
    const ProgressReporter reporter(3);
    for (std::size_t i = 0; i < 3; ++i) reporter.itemBegan()(i, "x");
  }
  turn(200ms);
  EXPECT_THAT(renderer_.drawn, IsEmpty());
}

TEST_F(ProgressReporterTest, ShowsASingleItemOnlyAfterASecond) {
  const ProgressReporter reporter(1);
  reporter.itemBegan()(0, "a.png");
  turn(600ms);
  EXPECT_THAT(renderer_.drawn, IsEmpty());
  turn(900ms);
  EXPECT_THAT(renderer_.drawn, ElementsAre("0/1 a.png"));
}

TEST_F(ProgressReporterTest, DrawsSeldomHoweverFastTheItemsGoBy) {
  const ProgressReporter reporter(100000);
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
  std::optional<ProgressReporter> reporter(2);
  const auto itemBegan = reporter->itemBegan();
  reporter.reset();
  itemBegan(1, "late.png");
  turn(150ms);
  EXPECT_THAT(renderer_.drawn, IsEmpty());
}

}  // namespace
}  // namespace ostra
