#include "host/integration/menu_files.h"

#include <algorithm>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/foundation/property_list.h"
#include "tests/support/temporary_folder.h"

namespace ostra {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

/// The program's own bundles and an eighth one.
class MenuFilesTest : public testing::Test {
 protected:
  MenuFilesTest() {
    std::filesystem::copy(OSTRA_SOURCE_BUNDLES, folder_.path("bundles"),
                          std::filesystem::copy_options::recursive);
    std::filesystem::create_directories(folder_.path("bundles/sepia"));
    const Bytes list = writePropertyList(
        Dictionary{{"NIVEQuickAction", "grayscale"}, {"CFBundleDisplayName", "Sepia / Tea & \"Milk\""}});
    test::writeFile(folder_.path("bundles/sepia/Info.plist"), ByteView(list));
    menu_ = readMenu({"/opt/my programs/ostra", folder_.path("bundles"), "/opt/b", OSTRA_MENU_TEMPLATES});
  }

  static std::vector<std::string> namesOf(const std::vector<MenuFile>& files) {
    std::vector<std::string> names;
    for (const MenuFile& file : files) names.push_back(file.name);
    return names;
  }

  const std::string templates_ = OSTRA_MENU_TEMPLATES;
  test::TemporaryFolder folder_;
  Menu menu_;
};

TEST_F(MenuFilesTest, ForExtensionsAreOneKeyFile) {
  const std::string text = extensionMenuFile(menu_, templates_).text;
  EXPECT_THAT(text, HasSubstr("\nName[de]=Bild umwandeln\n"));
  EXPECT_THAT(text, HasSubstr("\nProgram=/opt/my programs/ostra\n"));
  EXPECT_THAT(
      text,
      HasSubstr("\nEntries=convert-color-profile;grayscale;grayscale-jpg;invert;jpg;sepia;srgb;srgb-jpg;\n"));
  EXPECT_THAT(
      text, HasSubstr("\n[Entry grayscale]\nName=Convert to Grayscale\nName[de]=In Graustufen umwandeln\n"));
  EXPECT_THAT(text,
              HasSubstr("\n[Entry sepia]\nName=Sepia / Tea & \"Milk\"\nTooltip=Sepia / Tea & \"Milk\"\n"));
  EXPECT_THAT(text, EndsWith("\nBundle=/opt/b/srgb-jpg\n"));
}

TEST_F(MenuFilesTest, ForDolphinAreOneServiceMenuThatMayRun) {
  const MenuFile file = serviceMenuFile(menu_, templates_);
  EXPECT_TRUE(file.isExecutable);
  EXPECT_THAT(file.text, HasSubstr(";sepia;"));
  EXPECT_THAT(file.text, HasSubstr("\nX-KDE-Submenu[de]=Bild umwandeln\n"));
  EXPECT_THAT(file.text, HasSubstr("\n[Desktop Action sepia]\n"));
  EXPECT_THAT(file.text,
              HasSubstr("\nExec=\"/opt/my programs/ostra\" --ui=desktop --bundle /opt/b/sepia -- %F\n"));
}

TEST_F(MenuFilesTest, ForPCManFMAreAnActionEachAndTheMenuOfThem) {
  const std::vector<MenuFile> files = fileManagerActionFiles(menu_, templates_);
  ASSERT_THAT(files, SizeIs(9));
  EXPECT_EQ(files.back().name, "org.ostra.menu.desktop");
  EXPECT_THAT(files.back().text,
              HasSubstr("org.ostra.action.jpg;org.ostra.action.sepia;org.ostra.action.srgb;"));
  EXPECT_EQ(files[5].name, "org.ostra.action.sepia.desktop");
  for (const MenuFile& file : files) {
    EXPECT_THAT(file.text, Not(HasSubstr("Schemes")));
    EXPECT_THAT(file.text, HasSubstr("\nTooltip="));
    EXPECT_NE(file.name, "org.ostra.Ostra.desktop");
  }
}

TEST_F(MenuFilesTest, ForNemoSortAsTheMenuDoes) {
  const std::vector<MenuFile> files = nemoActionFiles(menu_, templates_);
  ASSERT_THAT(files, SizeIs(8));
  EXPECT_TRUE(std::is_sorted(files.begin(), files.end(),
                             [](const MenuFile& a, const MenuFile& b) { return a.name < b.name; }));
  EXPECT_EQ(files[5].name, "org.ostra.06-sepia.nemo_action");
  EXPECT_THAT(files[5].text, HasSubstr("\nUriScheme=file\n"));
  EXPECT_THAT(files[5].text,
              HasSubstr("\nExec='/opt/my programs/ostra' --ui=desktop --bundle /opt/b/sepia -- %F\n"));
}

TEST_F(MenuFilesTest, ForThunarAreElementsWithIdentifiersOfOurOwn) {
  const std::vector<std::string> actions = thunarActions(menu_, templates_);
  ASSERT_THAT(actions, SizeIs(8));
  EXPECT_THAT(actions[5], HasSubstr("<name>Sepia / Tea &amp; \"Milk\"</name>"));
  EXPECT_THAT(actions[5], HasSubstr("<unique-id>org.ostra.Ostra-sepia</unique-id>"));
  EXPECT_THAT(actions[0], HasSubstr("<name xml:lang=\"de\">Farbprofil umwandeln</name>"));
}

TEST_F(MenuFilesTest, ForFoldersOfScriptsAreCalledAsTheUserReads) {
  setenv("LC_ALL", "de_DE.UTF-8", 1);
  const std::vector<std::string> german = namesOf(scriptFiles(menu_, templates_));
  unsetenv("LC_ALL");
  EXPECT_EQ(german[1], "Bild umwandeln/In Graustufen umwandeln");
  EXPECT_EQ(german[5], "Bild umwandeln/Sepia - Tea & \"Milk\"");
}

TEST_F(MenuFilesTest, ForFoldersOfScriptsDifferInTheirNamesEvenWhereTitlesDoNot) {
  menu_.entries[1].name = menu_.entries[0].name;
  const std::vector<std::string> names = namesOf(scriptFiles(menu_, templates_));
  EXPECT_NE(names[0], names[1]);
  EXPECT_THAT(names[1], HasSubstr("grayscale"));
}

}  // namespace
}  // namespace ostra
