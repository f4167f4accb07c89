#include "platform/foundation/user_defaults.h"

#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/foundation/property_list.h"
#include "platform/foundation/service.h"
#include "tests/support/child.h"
#include "tests/support/temporary_folder.h"

namespace ostra {
namespace {

constexpr std::string_view kKey = "OstraQuickActionLastProfile";

class UserDefaults : public ::testing::Test {
 protected:
  UserDefaults() { setenv("XDG_CONFIG_HOME", folder_.path("config/deep").c_str(), 1); }
  ~UserDefaults() override { unsetenv("XDG_CONFIG_HOME"); }

  std::string file() const { return folder_.path("config/deep/ostra/defaults.plist"); }
  static std::optional<std::string> profile() {
    return NSUserDefaults::standardUserDefaults().stringForKey(kKey);
  }
  static void setProfile(std::string_view name) {
    NSUserDefaults::standardUserDefaults().setString(name, kKey);
  }

  test::TemporaryFolder folder_;
};

TEST_F(UserDefaults, RememberAStringInTheUsersSettings) {
  EXPECT_EQ(profile(), std::nullopt);
  setProfile("Display P3 & “co”");
  EXPECT_EQ(profile(), "Display P3 & “co”");
  EXPECT_EQ(readPropertyList(test::readFile(file())),
            Value(Dictionary{{std::string(kKey), "Display P3 & “co”"}}));
}

TEST_F(UserDefaults, KeepTheOtherSettings) {
  setProfile("a");
  NSUserDefaults::standardUserDefaults().setString("x", "other");
  setProfile("b");
  EXPECT_EQ(NSUserDefaults::standardUserDefaults().stringForKey("other"), "x");
  EXPECT_EQ(profile(), "b");
}

TEST_F(UserDefaults, ThatCannotBeReadCountAsAbsentAndAreWrittenAnew) {
  setProfile("a");
  test::writeFile(file(), "junk");
  EXPECT_EQ(profile(), std::nullopt);
  setProfile("b");
  EXPECT_EQ(profile(), "b");
}

TEST_F(UserDefaults, OfAnEnormousFileCountAsAbsentAndAreWrittenAnew) {
  setProfile("a");
  test::writeFile(file(), std::string(5 << 20, ' ') + "<plist><dict/></plist>");
  EXPECT_EQ(profile(), std::nullopt);
  setProfile("b");
  EXPECT_EQ(profile(), "b");
}

// The library walks a list by recursion, and a stack has an end.
TEST_F(UserDefaults, NestedWithoutEndCountAsAbsent) {
  setProfile("a");
  for (const std::size_t depth : {100u, 10'000u, 1'000'000u}) {
    std::string list = "<plist version=\"1.0\">";
    for (std::size_t i = 0; i < depth; ++i) list += "<array>";
    test::writeFile(file(), list);
    EXPECT_EQ(profile(), std::nullopt);
    for (std::size_t i = 0; i < depth; ++i) list += "</array>";
    test::writeFile(file(), list + "</plist>");
    EXPECT_EQ(profile(), std::nullopt);
  }
}

TEST_F(UserDefaults, ThatArePipesOrFoldersCountAsAbsent) {
  setProfile("a");
  std::filesystem::remove(file());
  ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
  EXPECT_EQ(profile(), std::nullopt);
  setProfile("b");
  EXPECT_EQ(profile(), "b");
  std::filesystem::remove(file());
  std::filesystem::create_directory(file());
  EXPECT_EQ(profile(), std::nullopt);
  setProfile("c");
  EXPECT_EQ(profile(), std::nullopt);
}

TEST_F(UserDefaults, ThatTheUserMayNotReadOrWriteCountAsAbsent) {
  setProfile("a");
  const std::string folder = folder_.path("config/deep/ostra");
  chmod(file().c_str(), 0);
  for (const char* each : {"", "config", "config/deep", "config/deep/ostra"})
    chmod(folder_.path(each).c_str(), 0755);
  EXPECT_EQ(test::runInChildAsOrdinaryUser([] {
              EXPECT_EQ(profile(), std::nullopt);
              setProfile("b");
            }),
            0);
  chmod(file().c_str(), 0600);
  EXPECT_EQ(profile(), "a");
}

TEST_F(UserDefaults, OfAnotherKindCountAsAbsent) {
  setProfile("a");
  test::writeFile(file(), writePropertyList(Dictionary{{std::string(kKey), 5}}));
  EXPECT_EQ(profile(), std::nullopt);
}

TEST_F(UserDefaults, ThatCannotBeWrittenAreLostSilently) {
  test::writeFile(folder_.path("config"), "a file where the folder should be");
  setProfile("a");
  EXPECT_EQ(profile(), std::nullopt);
}

TEST_F(UserDefaults, StandInTheHomeFolderWhereNoOtherPlaceIsNamed) {
  const char* home = std::getenv("HOME");
  const std::string before = home != nullptr ? home : "";
  setenv("XDG_CONFIG_HOME", "not/absolute", 1);
  setenv("HOME", folder_.path().c_str(), 1);
  setProfile("a");
  EXPECT_TRUE(std::filesystem::exists(folder_.path(".config/ostra/defaults.plist")));
  unsetenv("HOME");
  EXPECT_EQ(profile(), std::nullopt);
  setProfile("b");
  if (home != nullptr) setenv("HOME", before.c_str(), 1);
}

}  // namespace
}  // namespace ostra
