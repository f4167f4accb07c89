#include "host/integration/menu.h"

#include <filesystem>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/bundles.h"
#include "host/integration/users_text.h"
#include "host/usage_error.h"
#include "platform/foundation/property_list.h"
#include "tests/support/temporary_folder.h"

namespace ostra {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

class MenuTest : public testing::Test {
 protected:
  void add(const std::string& name, const Dictionary& info) { write(name + "/Info.plist", info); }
  void translate(const std::string& name, const std::string& language, const Dictionary& strings) {
    write(name + "/" + language + ".lproj/InfoPlist.strings", strings);
  }
  void write(const std::string& name, const Dictionary& list) {
    const std::string path = folder_.path(name);
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    const Bytes bytes = writePropertyList(list);
    test::writeFile(path, ByteView(bytes));
  }
  Menu menu() { return readMenu({"/bin/ostra", folder_.path(), "/named", OSTRA_MENU_TEMPLATES}); }
  test::TemporaryFolder folder_;
};

TEST_F(MenuTest, HasAnEntryForEachBundleWithAnActionInTheOrderOfTheList) {
  add("b", {{"NIVEQuickAction", "x"}, {"CFBundleDisplayName", "B"}});
  add("a", {{"NIVEQuickAction", "y"},
            {"CFBundleDisplayName", "A"},
            {"OstraMenuTooltip", "Tip"},
            {"OstraMenuIcon", "icon"}});
  add("c", {{"CFBundleDisplayName", "C"}});
  const Menu made = menu();
  ASSERT_EQ(made.entries.size(), 2u);
  EXPECT_EQ(made.entries[0].identifier, "a");
  EXPECT_EQ(made.entries[0].tooltip.plain, "Tip");
  EXPECT_EQ(made.entries[0].icon, "icon");
  EXPECT_EQ(made.entries[0].bundle, "/named/a");
  EXPECT_EQ(made.entries[1].name.plain, "B");
  EXPECT_EQ(made.program, "/bin/ostra");
}

TEST_F(MenuTest, NeverLacksANameATooltipOrAnIcon) {
  add("bare", {{"NIVEQuickAction", "x"}});
  const Menu made = menu();
  EXPECT_EQ(made.entries[0].name.plain, "bare");
  EXPECT_EQ(made.entries[0].tooltip.plain, "bare");
  EXPECT_EQ(made.entries[0].icon, made.icon);
  EXPECT_NE(made.icon, "");
}

TEST_F(MenuTest, KnowsEveryLanguageThatABundleBrings) {
  add("a", {{"NIVEQuickAction", "x"}, {"CFBundleDisplayName", "Gray"}});
  translate("a", "de", {{"CFBundleDisplayName", "Grau"}});
  translate("a", "pt-BR", {{"CFBundleDisplayName", "Cinza"}, {"OstraMenuTooltip", "Dica"}});
  translate("a", "fr", {{"OstraMenuTooltip", "Aide"}});
  const MenuEntry entry = menu().entries[0];
  EXPECT_EQ(entry.name, (MenuText{"Gray", {{"de", "Grau"}, {"pt_BR", "Cinza"}}}));
}

TEST_F(MenuTest, ReportsATranslationThatCannotBeRead) {
  add("a", {{"NIVEQuickAction", "x"}, {"CFBundleDisplayName", "Gray"}});
  std::filesystem::create_directories(folder_.path("a/de.lproj"));
  test::writeFile(folder_.path("a/de.lproj/InfoPlist.strings"), "\"no\" = \"list\";");
  testing::internal::CaptureStderr();
  EXPECT_EQ(menu().entries[0].name, (MenuText{"Gray", {}}));
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("de.lproj"));
}

TEST_F(MenuTest, KeepsTitlesOnOneLine) {
  add("a", {{"NIVEQuickAction", "x"}, {"CFBundleDisplayName", "Two\nlines\x7F"}});
  EXPECT_EQ(menu().entries[0].name.plain, "Two lines ");
}

TEST_F(MenuTest, MakesIdentifiersThatEveryMechanismTakes) {
  add("My Gray.ä", {{"NIVEQuickAction", "x"}});
  const MenuEntry entry = menu().entries[0];
  EXPECT_EQ(entry.identifier, "My-20Gray-2E-C3-A4");
  EXPECT_EQ(entry.bundle, "/named/My Gray.ä");
}

TEST_F(MenuTest, IsForTheTypesThatAreReadUnderTheNamesThatDesktopsGiveThem) {
  add("a", {{"NIVEQuickAction", "x"}});
  const Menu made = menu();
  for (const char* type : {"image/png", "image/jpeg", "image/tiff", "image/heif", "image/heic", "image/avif",
                           "image/webp", "image/jxl", "image/jp2", "image/x-exr", "image/x-canon-cr2",
                           "image/x-adobe-dng", "image/bmp", "image/x-tga", "image/vnd.microsoft.icon"}) {
    EXPECT_THAT(made.mimeTypes, Contains(type));
  }
  for (const char* type : {"image/svg+xml", "image/x-xcf", "application/pdf", ""}) {
    EXPECT_THAT(made.mimeTypes, Not(Contains(type)));
  }
  EXPECT_EQ(std::set<std::string>(made.mimeTypes.begin(), made.mimeTypes.end()).size(),
            made.mimeTypes.size());
  EXPECT_THAT(made.extensions, Contains("nef"));
}

TEST_F(MenuTest, NeedsItsTemplatesAndABundle) {
  EXPECT_THROW(menu(), UsageError);
  add("a", {{"NIVEQuickAction", "x"}});
  EXPECT_THROW(readMenu({"/bin/ostra", folder_.path(), "/named", folder_.path("none")}), UsageError);
}

TEST(OwnMenu, IsWhollyInEnglishAndGerman) {
  const Menu menu = readMenu({"/bin/ostra", OSTRA_SOURCE_BUNDLES, "/named", OSTRA_MENU_TEMPLATES});
  ASSERT_EQ(menu.entries.size(), bundlesIn(OSTRA_SOURCE_BUNDLES).size());
  EXPECT_EQ(menu.name, (MenuText{"Convert Picture", {{"de", "Bild umwandeln"}}}));
  std::set<std::string> names;
  for (const MenuEntry& entry : menu.entries) {
    EXPECT_TRUE(entry.name.translations.contains("de")) << entry.identifier;
    EXPECT_TRUE(entry.tooltip.translations.contains("de")) << entry.identifier;
    EXPECT_NE(entry.tooltip.plain, entry.name.plain) << entry.identifier;
    EXPECT_TRUE(names.insert(entry.name.plain).second) << entry.identifier;
    EXPECT_TRUE(names.insert(entry.name.translations.at("de")).second) << entry.identifier;
  }
}

class UsersTextTest : public testing::Test {
 protected:
  static std::string in(const char* locale, const char* languages = "") {
    setenv("LC_ALL", locale, 1);
    setenv("LANGUAGE", languages, 1);
    const std::string text = inUsersLanguage({"Gray", {{"de", "Grau"}, {"pt_BR", "Cinza"}}});
    unsetenv("LC_ALL");
    unsetenv("LANGUAGE");
    return text;
  }
};

TEST_F(UsersTextTest, IsInTheFirstLanguageThatTheUserReads) {
  EXPECT_EQ(in("de_AT.UTF-8"), "Grau");
  EXPECT_EQ(in("pt_BR.UTF-8"), "Cinza");
  EXPECT_EQ(in("pt_PT.UTF-8"), "Gray");
  EXPECT_EQ(in("C.UTF-8"), "Gray");
  EXPECT_EQ(in("fr_FR.UTF-8", "fr:de"), "Grau");
  EXPECT_EQ(in("en_GB.UTF-8", "en_GB:de"), "Gray");
}

}  // namespace
}  // namespace ostra
