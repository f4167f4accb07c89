#include "desktop/extensions/menu_file.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/desktop_extensions/menu_description.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {
namespace {

class MenuFile : public ::testing::Test {
 protected:
  void write(const std::string& program) { writeFile(path_, menuDescription(program, "/bundles")); }
  /// As packages are updated: another file takes the name.
  void replace(const std::string& program) {
    writeFile(path_ + ".new", menuDescription(program, "/bundles"));
    std::filesystem::rename(path_ + ".new", path_);
  }

  TemporaryFolder folder_;
  std::string path_ = folder_.path("menu.ini");
  menu::MenuFile file_{path_};
};

TEST_F(MenuFile, IsReadOnceWhileNothingChanges) {
  write("/usr/bin/a");
  const auto first = file_.current();
  ASSERT_TRUE(first);
  EXPECT_EQ(file_.current(), first);
}

TEST_F(MenuFile, IsReadAgainWhenItChanged) {
  write("/usr/bin/a");
  const auto first = file_.current();
  replace("/usr/bin/b");
  ASSERT_TRUE(file_.current());
  EXPECT_EQ(file_.current()->program, "/usr/bin/b");
  EXPECT_EQ(first->program, "/usr/bin/a");
}

TEST_F(MenuFile, MayComeAndGo) {
  EXPECT_FALSE(file_.current());
  write("/usr/bin/a");
  EXPECT_TRUE(file_.current());
  std::filesystem::remove(path_);
  EXPECT_FALSE(file_.current());
  write("/usr/bin/a");
  EXPECT_TRUE(file_.current());
}

TEST_F(MenuFile, IsToldOfOnceWhenItIsBroken) {
  writeFile(path_, "broken");
  ::testing::internal::CaptureStderr();
  EXPECT_FALSE(file_.current());
  EXPECT_NE(::testing::internal::GetCapturedStderr(), "");
  ::testing::internal::CaptureStderr();
  EXPECT_FALSE(file_.current());
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace ostra::test
