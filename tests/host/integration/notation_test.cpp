#include "host/integration/notation.h"

#include <gtest/gtest.h>

#include "tests/support/program.h"

namespace ostra {
namespace {

const char* const kOddWords[] = {"/usr/bin/ostra", "/a b/c",   "it's", "\"q\"", "$HOME `x` \\",
                                 "50%f %F",        "a;b&c<d>", "-x",   "",      "\xC3\xBC\xFF"};

TEST(ShellNotation, GivesTheShellBackEveryWord) {
  for (const char* word : kOddWords) {
    const auto result = test::runProgram({"sh", "-c", "printf '%s|' " + kShellNotation.word(word)});
    EXPECT_EQ(result.output, std::string(word) + "|") << word;
  }
}

TEST(DesktopEntryNotation, QuotesWordsAndThenTheTextThatTheyAre) {
  EXPECT_EQ(kDesktopEntryNotation.word("/usr/bin/ostra"), "/usr/bin/ostra");
  EXPECT_EQ(kDesktopEntryNotation.word("/a b"), "\"/a b\"");
  EXPECT_EQ(kDesktopEntryNotation.word("100%"), "\"100%%\"");
  EXPECT_EQ(kDesktopEntryNotation.word("a\"b"), R"("a\\"b")");
  EXPECT_EQ(kDesktopEntryNotation.word("$a`b"), R"("\\$a\\`b")");
  EXPECT_EQ(kDesktopEntryNotation.word("\\"), R"("\\\\")");
}

TEST(DesktopEntryNotation, EscapesTexts) {
  EXPECT_EQ(kDesktopEntryNotation.text("  a\tb\n\\ ü%"), "\\s a\\tb\\n\\\\ ü%");
}

TEST(ShellKeyFileNotation, LeavesPercentSignsAlone) {
  EXPECT_EQ(kShellKeyFileNotation.word("100% it's"), R"('100% it'\\''s')");
}

TEST(ShellXmlNotation, EscapesForAllThreeThatReadIt) {
  EXPECT_EQ(kShellXmlNotation.word("a&b %"), "'a&amp;b %%'");
  EXPECT_EQ(kShellXmlNotation.text("<a> & %"), "&lt;a&gt; &amp; %");
}

TEST(MenuValues, HoldTheCommandOfEachEntryAndTheListsOfTheMenu) {
  Menu menu;
  menu.name = {"Convert <it>", {{"de", "Wandle & mach"}}};
  menu.program = "/opt/my ostra";
  menu.mimeTypes = {"image/png", "image/jpeg"};
  menu.extensions = {"png", "jp2"};
  menu.entries = {{"gray", {"Gray", {}}, {"Tip", {}}, "icon", "/b/gray"},
                  {"x", {"X", {}}, {"X", {}}, "i", "/b/x"}};
  const TemplateValues values = menuValues(menu, kShellXmlNotation);
  EXPECT_EQ(values.texts.at("MENU_NAME"), (MenuText{"Convert &lt;it&gt;", {{"de", "Wandle &amp; mach"}}}));
  EXPECT_EQ(values.texts.at("MIME_TYPES").plain, "image/png;image/jpeg;");
  EXPECT_EQ(values.texts.at("PATTERNS").plain, "*.png;*.PNG;*.jp2;*.JP2;");
  EXPECT_EQ(values.texts.at("ENTRIES").plain, "gray;x;");
  ASSERT_EQ(values.entries.size(), 2u);
  EXPECT_EQ(values.entries[0].texts.at("COMMAND").plain, "'/opt/my ostra' --ui=desktop --bundle /b/gray");
  EXPECT_EQ(values.entries[1].texts.at("MIME_TYPES").plain, "image/png;image/jpeg;");
}

}  // namespace
}  // namespace ostra
