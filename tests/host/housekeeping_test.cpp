#include "host/housekeeping.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/temporary_folder.h"

namespace ostra {
namespace {

constexpr time_t kHour = 60 * 60;

class HousekeepingTest : public testing::Test {
 protected:
  HousekeepingTest() { setenv("XDG_CACHE_HOME", cache_.path().c_str(), 1); }
  ~HousekeepingTest() override { unsetenv("XDG_CACHE_HOME"); }

  static void setAge(const std::string& path, time_t age) {
    const timespec then{time(nullptr) - age, 0};
    const timespec times[2] = {then, then};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  }

  /// A replacement directory of a process that cannot be, two weeks old.
  static std::string leftOver(const std::string& folder) {
    const std::string path = folder + "/.ostra-4194999-abcdef";
    std::filesystem::create_directory(path);
    setAge(path, 14 * 24 * kHour);
    return path;
  }

  test::TemporaryFolder cache_, pictures_;
};

TEST_F(HousekeepingTest, RemovesWhatFormerRunsLeftBesideThePictures) {
  const std::string old = leftOver(pictures_.path());
  cleanUpAfterFormerRuns({pictures_.path("a.png"), pictures_.path("b.png")});
  EXPECT_FALSE(std::filesystem::exists(old));
}

TEST_F(HousekeepingTest, LooksOnlyOnceADay) {
  cleanUpAfterFormerRuns({});
  const std::string old = leftOver(pictures_.path());
  cleanUpAfterFormerRuns({pictures_.path("a.png")});
  EXPECT_TRUE(std::filesystem::exists(old));
  setAge(cache_.path("ostra/cleaned-up"), 25 * kHour);
  cleanUpAfterFormerRuns({pictures_.path("a.png")});
  EXPECT_FALSE(std::filesystem::exists(old));
}

TEST_F(HousekeepingTest, IsNotHeldUpByAStampFromTheFuture) {
  cleanUpAfterFormerRuns({});
  setAge(cache_.path("ostra/cleaned-up"), -1000 * kHour);
  const std::string old = leftOver(pictures_.path());
  cleanUpAfterFormerRuns({pictures_.path("a.png")});
  EXPECT_FALSE(std::filesystem::exists(old));
}

TEST_F(HousekeepingTest, TouchesNothingElse) {
  std::filesystem::create_directory(pictures_.path(".ostra-mine"));
  test::writeFile(pictures_.path("a.png"), "picture");
  cleanUpAfterFormerRuns({pictures_.path("a.png")});
  EXPECT_EQ(pictures_.names(), (std::vector<std::string>{".ostra-mine", "a.png"}));
}

}  // namespace
}  // namespace ostra
