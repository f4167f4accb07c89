#include "host/integration/desktop_folders.h"

#include <cstdlib>
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/usage_error.h"

namespace ostra {
namespace {

using testing::ElementsAre;

/// The environment is as before at the end of each test.
class DesktopFoldersTest : public testing::Test {
 protected:
  ~DesktopFoldersTest() override {
    for (const auto& [name, value] : before_) {
      if (value.empty()) {
        unsetenv(name.c_str());
      } else {
        setenv(name.c_str(), value.c_str(), 1);
      }
    }
  }
  void set(const std::string& name, const char* value) {
    const char* old = std::getenv(name.c_str());
    before_.emplace(name, old != nullptr ? old : "");
    if (value == nullptr) {
      unsetenv(name.c_str());
    } else {
      setenv(name.c_str(), value, 1);
    }
  }
  std::map<std::string, std::string> before_;
};

TEST_F(DesktopFoldersTest, AreThoseOfTheBaseDirectoryRules) {
  set("HOME", "/h");
  for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_DATA_DIRS", "XDG_CONFIG_DIRS"}) {
    set(name, nullptr);
  }
  set("PATH", "/a:relative::/b");
  const DesktopFolders folders = desktopFolders();
  EXPECT_EQ(folders.userData, "/h/.local/share");
  EXPECT_EQ(folders.userConfig, "/h/.config");
  EXPECT_THAT(folders.data, ElementsAre("/usr/local/share", "/usr/share"));
  EXPECT_THAT(folders.config, ElementsAre("/etc/xdg"));
  EXPECT_THAT(folders.executables, ElementsAre("/a", "/b"));
}

TEST_F(DesktopFoldersTest, AreTheEnvironmentsWhereItNamesThemWhole) {
  set("HOME", "/h");
  set("XDG_DATA_HOME", "/d/");
  set("XDG_CONFIG_HOME", "relative");
  set("XDG_DATA_DIRS", "/x:y:/d");
  set("XDG_CONFIG_DIRS", "/c1:/c2");
  const DesktopFolders folders = desktopFolders();
  EXPECT_EQ(folders.userData, "/d");
  EXPECT_EQ(folders.userConfig, "/h/.config");
  EXPECT_THAT(folders.data, ElementsAre("/x"));
  EXPECT_THAT(folders.config, ElementsAre("/c1", "/c2"));
}

TEST_F(DesktopFoldersTest, AreNotThereForSomebodyWithoutAHome) {
  for (const char* name : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME"}) set(name, nullptr);
  EXPECT_THROW(desktopFolders(), UsageError);
}

}  // namespace
}  // namespace ostra
