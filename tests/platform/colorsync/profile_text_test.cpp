#include "platform/colorsync/profile_text.h"

#include <gtest/gtest.h>

#include "tests/support/icc_builder.h"

namespace ostra::test {
namespace {

const Language kGerman{"de", "DE"};
const Language kAustrian{"de", "AT"};

TEST(ProfileText, IsThatOfTheUsersLanguage) {
  const Bytes tag = multiLanguageTag({{"enUS", u"Coated"}, {"deDE", u"Gestrichen ß"}, {"frFR", u"Couché"}});
  EXPECT_EQ(profileText(tag, {kGerman}), "Gestrichen ß");
  EXPECT_EQ(profileText(tag, {{"it", "IT"}, {"fr", ""}}), "Couché");
}

TEST(ProfileText, PrefersTheUsersCountry) {
  const Bytes tag = multiLanguageTag({{"deDE", u"D"}, {"deAT", u"A"}});
  EXPECT_EQ(profileText(tag, {kAustrian}), "A");
  EXPECT_EQ(profileText(tag, {{"de", "CH"}}), "D");
}

TEST(ProfileText, IsEnglishThenTheFirstWhereTheUsersLanguageIsMissing) {
  EXPECT_EQ(profileText(multiLanguageTag({{"frFR", u"F"}, {"enGB", u"GB"}, {"enUS", u"US"}}), {kGerman}),
            "US");
  EXPECT_EQ(profileText(multiLanguageTag({{"frFR", u"F"}, {"enGB", u"GB"}}), {}), "GB");
  EXPECT_EQ(profileText(multiLanguageTag({{"frFR", u"F"}, {"itIT", u"I"}}), {kGerman}), "F");
}

TEST(ProfileText, MayBeOfNoLanguage) {
  EXPECT_EQ(profileText(multiLanguageTag({{std::string(4, '\0'), u"Any"}}), {kGerman}), "Any");
}

TEST(ProfileText, IsTheUnicodePartOfAnOldDescriptionElseTheAsciiOne) {
  EXPECT_EQ(profileText(descriptionTag("Grau", u"Gräu"), {}), "Gräu");
  EXPECT_EQ(profileText(descriptionTag("Gray"), {}), "Gray");
  EXPECT_EQ(profileText(descriptionTag("Gr\xE4u"), {}), "Gräu");
}

TEST(ProfileText, KnowsCharactersOutsideTheBasicPlaneAndLeavesOutHalvesOfThem) {
  EXPECT_EQ(profileText(multiLanguageTag({{"enUS", u"a\U0001F3A8b"}}), {}), "a🎨b");
  const std::u16string halves = {u'a', char16_t(0xD83C), u'b', char16_t(0xDFA8)};
  EXPECT_EQ(profileText(multiLanguageTag({{"enUS", halves}}), {}), "ab");
}

TEST(ProfileText, EndsAtANul) {
  EXPECT_EQ(profileText(multiLanguageTag({{"enUS", std::u16string(u"ab\0cd", 5)}}), {}), "ab");
}

TEST(ProfileText, IsEmptyWhereTheTagIsOfAnotherType) {
  EXPECT_EQ(profileText({}, {}), "");
  Bytes other = descriptionTag("text");
  other[0] = 't';
  EXPECT_EQ(profileText(other, {}), "");
}

TEST(ProfileText, OfATagThatIsCutOrLiesAnywhereReadsNothingBeyondIt) {
  const Bytes tags[] = {descriptionTag("Gray", u"Gräu"),
                        multiLanguageTag({{"enUS", u"Text"}, {"deDE", u"x"}})};
  for (const Bytes& whole : tags) {
    for (std::size_t size = 0; size < whole.size(); ++size) {
      const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
      profileText(cut, {kGerman});
    }
    for (std::size_t at = 8; at + 4 <= whole.size(); ++at) {
      Bytes lying = whole;
      putNumber(lying, at, 0xFFFFFFFF);
      profileText(lying, {kGerman});
    }
  }
}

TEST(ProfileText, SkipsARecordThatLiesOutsideTheTag) {
  Bytes tag = multiLanguageTag({{"deDE", u"D"}, {"enUS", u"E"}});
  putNumber(tag, 16 + 8, 4000);
  EXPECT_EQ(profileText(tag, {kGerman}), "E");
}

}  // namespace
}  // namespace ostra::test
