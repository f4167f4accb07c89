#include "desktop/extensions/menu.h"

#include <gtest/gtest.h>

#include "tests/desktop_extensions/language.h"
#include "tests/desktop_extensions/menu_description.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {
namespace {

using menu::readMenu;

class MenuDescription : public ::testing::Test {
 protected:
  std::optional<menu::Menu> read(const std::string& text) {
    writeFile(path_, text);
    return readMenu(path_);
  }
  std::optional<menu::Menu> readUsual() { return read(menuDescription("/usr/bin/ostra", "/bundles")); }

  TemporaryFolder folder_;
  std::string path_ = folder_.path("menu.ini");
};

TEST_F(MenuDescription, HasTheActionsInTheirOrder) {
  const Language english("en");
  const auto menu = readUsual();
  ASSERT_TRUE(menu);
  EXPECT_EQ(menu->title, "Convert Picture");
  EXPECT_EQ(menu->icon, "org.ostra.Ostra");
  EXPECT_EQ(menu->program, "/usr/bin/ostra");
  ASSERT_EQ(menu->entries.size(), 2U);
  EXPECT_EQ(menu->entries[0].action, "grayscale");
  EXPECT_EQ(menu->entries[0].title, "Convert to Grayscale");
  EXPECT_EQ(menu->entries[0].tooltip, "Rewrites the pictures");
  EXPECT_EQ(menu->entries[0].icon, "color-mode");
  EXPECT_EQ(menu->entries[0].bundle, "/bundles/grayscale");
  EXPECT_EQ(menu->entries[1].action, "invert");
}

TEST_F(MenuDescription, SpeaksTheLanguageOfTheUser) {
  const Language german("de_DE.UTF-8");
  const auto menu = readUsual();
  ASSERT_TRUE(menu);
  EXPECT_EQ(menu->title, "Bild umwandeln");
  EXPECT_EQ(menu->entries[0].title, "In Graustufen umwandeln");
  EXPECT_EQ(menu->entries[0].tooltip, "Schreibt die Bilder neu");
  EXPECT_EQ(menu->entries[1].title, "Invert");
}

TEST_F(MenuDescription, GivesEveryEntryATooltipAndAnIcon) {
  const auto menu = readUsual();
  ASSERT_TRUE(menu);
  EXPECT_EQ(menu->entries[1].tooltip, "Invert");
  EXPECT_EQ(menu->entries[1].icon, "org.ostra.Ostra");
}

TEST_F(MenuDescription, LeavesOutAnActionThatHasNoBundle) {
  const auto menu = read(menuDescription("p", "/b") + "[Entry other]\n");
  ASSERT_TRUE(menu);
  EXPECT_EQ(menu->entries.size(), 2U);
  const auto smaller = read("[Menu]\nName=M\nProgram=p\nEntries=a;b;\n[Entry b]\nBundle=/b\n");
  ASSERT_TRUE(smaller);
  ASSERT_EQ(smaller->entries.size(), 1U);
  EXPECT_EQ(smaller->entries[0].title, "b");
}

TEST_F(MenuDescription, IsNoneWithoutAFileAndSaysNothing) {
  ::testing::internal::CaptureStderr();
  EXPECT_FALSE(readMenu(folder_.path("missing.ini")));
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST_F(MenuDescription, IsNoneWhereItMakesNoSenseAndSaysSoInALine) {
  for (const char* text :
       {"", "no key file", "[Menu]\nName=M\n", "[Menu]\nName=M\nProgram=p\nEntries=a;\n"}) {
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(read(text)) << text;
    const std::string told = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(told.rfind("ostra: " + path_ + ": ", 0), 0U) << told;
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << told;
  }
}

TEST(MenuTitle, KeepsItsUnderscores) {
  EXPECT_EQ(menu::withoutMnemonic("to_gray_"), "to__gray__");
  EXPECT_EQ(menu::withoutMnemonic("Invert"), "Invert");
}

}  // namespace
}  // namespace ostra::test
