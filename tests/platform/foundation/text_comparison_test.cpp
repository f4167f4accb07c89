#include "platform/foundation/text_comparison.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/foundation/unicode.h"
#include "platform/foundation/user_languages.h"
#include "tests/support/child.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

std::vector<std::string> sorted(std::vector<std::string> texts) {
  std::stable_sort(texts.begin(), texts.end(), [](const std::string& one, const std::string& other) {
    return localizedCaseInsensitiveCompare(one, other) == NSComparisonResult::orderedAscending;
  });
  return texts;
}

/// The locale counts for the whole process, so each has one of its own.
void inLocale(const std::string& name, const std::function<void()>& part) {
  EXPECT_EQ(runInChild([&] {
              setenv("LC_ALL", name.c_str(), 1);
              part();
            }),
            0)
      << name;
}

TEST(Comparison, OfPlainLocalesPutsMarksBeforeDigitsBeforeLetters) {
  for (const char* locale : {"C", "POSIX", "C.UTF-8", "xx_XX.UTF-8", "no such locale"}) {
    inLocale(locale, [] {
      EXPECT_THAT(sorted({"b", "a1", "a b", "9", "10", "a", "-x", "ab", "_x", " x"}),
                  ElementsAre(" x", "_x", "-x", "10", "9", "a", "a b", "a1", "ab", "b"));
    });
  }
}

TEST(Comparison, IgnoresLetterCaseAndNothingElse) {
  inLocale("C", [] {
    using R = NSComparisonResult;
    EXPECT_EQ(localizedCaseInsensitiveCompare("Paper", "pAPER"), R::orderedSame);
    EXPECT_EQ(localizedCaseInsensitiveCompare("ÄÖ", "äö"), R::orderedSame);
    EXPECT_EQ(localizedCaseInsensitiveCompare("a", "ä"), R::orderedAscending);
    EXPECT_EQ(localizedCaseInsensitiveCompare("ab", "a b"), R::orderedDescending);
    EXPECT_EQ(localizedCaseInsensitiveCompare("", ""), R::orderedSame);
    EXPECT_EQ(localizedCaseInsensitiveCompare("", "a"), R::orderedAscending);
  });
}

TEST(Comparison, DoesNotCount) {
  inLocale("C", [] {
    EXPECT_THAT(sorted({"Profile 2", "Profile 10"}), ElementsAre("Profile 10", "Profile 2"));
  });
}

// Two languages made from the system's sources of locales; one test, for the making takes seconds.
TEST(Comparison, FollowsTheUsersLanguageButKeepsMarksBeforeDigitsBeforeLetters) {
  OSTRA_NEEDS_PROGRAM("localedef");
  const TemporaryFolder folder;
  for (const char* language : {"de_DE", "sv_SE"}) {
    const std::string made = folder.path(std::string(language) + ".UTF-8");
    runProgram({"localedef", "-i", language, "-f", "UTF-8", made});
    if (!std::filesystem::exists(made)) GTEST_SKIP() << "the sources of locales are not installed";
  }
  setenv("LOCPATH", folder.path().c_str(), 1);
  const std::vector<std::string> texts = {"z", "ö", "o", "ä", "a", "p"};
  inLocale("sv_SE.UTF-8", [&] { EXPECT_THAT(sorted(texts), ElementsAre("a", "o", "p", "z", "ä", "ö")); });
  inLocale("de_DE.UTF-8", [&] {
    EXPECT_THAT(sorted(texts), ElementsAre("a", "ä", "o", "ö", "p", "z"));
    // Letters count before accents.
    EXPECT_THAT(sorted({"öb", "oc", "ob"}), ElementsAre("ob", "öb", "oc"));
    const std::vector<std::string> order = {" x",  "_x",  "-x", "10", "9", "a", "a b",
                                            "a_b", "a-b", "a1", "ab", "B", "b", "ba"};
    std::vector<std::string> mixed(order.rbegin(), order.rend());
    std::iter_swap(std::find(mixed.begin(), mixed.end(), "b"), std::find(mixed.begin(), mixed.end(), "B"));
    EXPECT_THAT(sorted(mixed), ElementsAreArray(order));
  });
  unsetenv("LOCPATH");
}

TEST(Lowercased, IsUnicodesAndTheSameInEveryLocale) {
  for (const char* locale : {"C", "C.UTF-8", "tr_TR.UTF-8"}) {
    inLocale(locale, [] {
      EXPECT_EQ(lowercased("RGB I ÄÉÑ ЖΩ Ǆ 𐐀 ß 1_"), "rgb i äéñ жω ǆ 𐐨 ß 1_");
      EXPECT_EQ(lowercased("İ"), "i\u0307");
    });
  }
}

TEST(Lowercased, EndsAGreekWordAsItIsWritten) { EXPECT_EQ(lowercased("ΟΔΟΣ ΣΑΣ Σ"), "οδος σας σ"); }

TEST(Lowercased, TakesBytesThatAreNoCharactersForReplacements) {
  EXPECT_EQ(lowercased("A\xFF\xC3"), "a\uFFFD\uFFFD");
}

TEST(Characters, AreDecodedOnlyFromWellFormedUtf8) {
  EXPECT_EQ(charactersOf("a\u00E9\u20AC\U0001F3A8"), U"aé€🎨");
  for (const char* malformed : {"\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                                "\xF8\x88\x80\x80\x80", "\x80", "\xE2\x82"}) {
    for (const char32_t character : charactersOf(malformed)) EXPECT_EQ(character, char32_t{0xFFFD});
  }
  EXPECT_EQ(charactersOf("\xC3"
                         "a"),
            U"\uFFFDa");
}

TEST(UserLanguages, AreThoseOfTheEnvironmentBestFirst) {
  EXPECT_EQ(runInChild([] {
              for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANGUAGE"}) unsetenv(variable);
              setenv("LANG", "de_AT.UTF-8@euro", 1);
              EXPECT_THAT(userLanguages(), ElementsAre(Language{"de", "AT"}));
              setenv("LANGUAGE", "fr::pt_BR", 1);
              EXPECT_THAT(userLanguages(),
                          ElementsAre(Language{"fr", ""}, Language{"pt", "BR"}, Language{"de", "AT"}));
              setenv("LC_MESSAGES", "C.UTF-8", 1);
              EXPECT_THAT(userLanguages(), testing::IsEmpty());
              setenv("LC_ALL", "sv", 1);
              unsetenv("LANGUAGE");
              EXPECT_THAT(userLanguages(), ElementsAre(Language{"sv", ""}));
            }),
            0);
}

}  // namespace
}  // namespace ostra::test
