#include "host/integration/file_managers.h"

#include <gtest/gtest.h>

#include "tests/host/integration/home_folder.h"

namespace ostra {
namespace {

class FileManagersTest : public testing::Test {
 protected:
  const FileManager& manager(std::string_view name) {
    for (const FileManager& each : knownFileManagers()) {
      if (each.name == name) return each;
    }
    throw std::out_of_range(std::string(name));
  }
  test::HomeFolder home_;
  DesktopFolders folders_{home_.home("/data"),    home_.home("/config"),  {home_.system("/share")},
                          {home_.system("/etc")}, {home_.system("/lib")}, {home_.system("/bin")}};
};

TEST_F(FileManagersTest, AreInstalledWhenTheirProgramCanBeRun) {
  EXPECT_FALSE(isInstalled(manager("Thunar"), folders_));
  home_.write(home_.system("/bin/thunar"), "", 0644);
  home_.install("caja");
  EXPECT_TRUE(isInstalled(manager("Caja"), folders_));
  EXPECT_FALSE(isInstalled(manager("Nemo"), folders_));
}

TEST_F(FileManagersTest, AreServedByAPackagesFileOrExtension) {
  for (const FileManager& each : knownFileManagers()) EXPECT_FALSE(isServed(each, folders_)) << each.name;
  home_.write(home_.system("/share/kio/servicemenus/org.ostra.Ostra.desktop"), "");
  home_.write(home_.system("/lib/thunarx-3/ostra-thunar.so"), "");
  EXPECT_TRUE(isServed(manager("Dolphin"), folders_));
  EXPECT_TRUE(isServed(manager("Thunar"), folders_));
  EXPECT_FALSE(isServed(manager("PCManFM"), folders_));
  home_.write(home_.system("/share/file-manager/actions/org.ostra.menu.desktop"), "");
  EXPECT_TRUE(isServed(manager("PCManFM"), folders_));
  EXPECT_TRUE(isServed(manager("PCManFM-Qt"), folders_));
}

TEST_F(FileManagersTest, LackALibraryOnlyWhereTheyNeedOne) {
  EXPECT_FALSE(lacksLibrary(manager("PCManFM-Qt"), folders_));
  EXPECT_TRUE(lacksLibrary(manager("PCManFM"), folders_));
  home_.write(home_.system("/lib/libfm/modules/gtk-menu-actions.so"), "");
  EXPECT_FALSE(lacksLibrary(manager("PCManFM"), folders_));
}

}  // namespace
}  // namespace ostra
