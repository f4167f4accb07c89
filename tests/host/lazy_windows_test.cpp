#include "host/lazy_windows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/doubles/renderer.h"

namespace ostra {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LazyWindowsTest : public testing::Test {
 protected:
  LazyWindows windows(bool there) {
    return LazyWindows([this, there](std::string& reason) -> Renderer* {
      log_.add("load");
      reason = "No windows here.";
      return there ? &renderer_ : nullptr;
    });
  }

  test::CallLog log_;
  test::RecordingRenderer renderer_{log_};
  NSAlert alert_{NSAlertStyle::warning, "Title", "text", {}};
};

TEST_F(LazyWindowsTest, AreNotLoadedForWhatShowsNothing) {
  LazyWindows lazy = windows(true);
  lazy.activate();
  lazy.beep();
  lazy.progress({2, 2, "", ""});
  lazy.notify("Title", "text");
  lazy.withdraw();
  EXPECT_THAT(log_.calls(), IsEmpty());
}

TEST_F(LazyWindowsTest, AreLoadedOnceForTheFirstThatIsShown) {
  LazyWindows lazy = windows(true);
  lazy.run(alert_);
  lazy.activate();
  lazy.run(NSSavePanel());
  EXPECT_TRUE(lazy.present(nullptr, "Panel"));
  lazy.beep();
  lazy.withdraw();
  EXPECT_THAT(log_.calls(),
              ElementsAre("load", "alert", "activate", "save panel", "present “Panel”", "beep", "withdraw"));
}

TEST_F(LazyWindowsTest, AreLoadedForWorkThatGoesOn) {
  LazyWindows lazy = windows(true);
  lazy.progress({1, 2, "a", ""});
  lazy.notify("Title", "text");
  EXPECT_THAT(log_.calls(), ElementsAre("load", "notify “Title”: text"));
}

TEST_F(LazyWindowsTest, ThatCannotBeLoadedSayWhyOnceAndBecomeLines) {
  LazyWindows lazy = windows(false);
  testing::internal::CaptureStderr();
  EXPECT_FALSE(lazy.present(nullptr, "Panel"));
  lazy.run(alert_);
  EXPECT_EQ(lazy.run(NSSavePanel()).response, NSModalResponseCancel);
  lazy.beep();
  lazy.withdraw();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "ostra: No windows here.\nTitle\n  text\n");
  EXPECT_THAT(log_.calls(), ElementsAre("load"));
}

}  // namespace
}  // namespace ostra
