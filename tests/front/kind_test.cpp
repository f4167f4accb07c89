#include "front/kind.h"

#include <unordered_set>

#include <gtest/gtest.h>

#include "platform/foundation/service.h"
#include "tests/doubles/bundle.h"

namespace ostra::test {
namespace {

using Kind = OstraQuickActionKind;

struct Expected {
  Kind kind;
  const char* rawValue;
  const char* title;
  bool jpeg;
};

constexpr Expected table[] = {
    {Kind::convertColorProfile, "convert-color-profile", "Convert Color Profile", false},
    {Kind::grayscale, "grayscale", "Convert to Grayscale", false},
    {Kind::grayscaleJPEG, "grayscale-jpg", "Convert to Grayscale .JPG", true},
    {Kind::jpeg, "jpg", "Convert to JPG", true},
    {Kind::sRGB, "srgb", "Convert to sRGB", false},
    {Kind::sRGBJPEG, "srgb-jpg", "Convert to sRGB .JPG", true},
    {Kind::invert, "invert", "Invert Color", false},
};

class KindOfABundle : public testing::Test {
 protected:
  std::optional<Kind> configured(Value value) {
    bundle_.info.insert_or_assign("NIVEQuickAction", std::move(value));
    return configuredKind();
  }
  void setDisplayName(Value value) { bundle_.info.insert_or_assign("CFBundleDisplayName", std::move(value)); }

  CallLog log_;
  RecordingBundle bundle_{log_};

 private:
  Service<NSBundle>::Override useBundle_{bundle_};
};

TEST(Kind, HasSevenCasesInTheirOrder) {
  ASSERT_EQ(allCases().size(), std::size(table));
  for (std::size_t i = 0; i < std::size(table); ++i) {
    EXPECT_EQ(allCases()[i], table[i].kind);
    EXPECT_EQ(static_cast<std::size_t>(table[i].kind), i);
  }
}

TEST(Kind, HasItsRawValueAndIsFoundByIt) {
  for (const Expected& row : table) {
    EXPECT_EQ(rawValue(row.kind), row.rawValue);
    EXPECT_EQ(kindWithRawValue(row.rawValue), row.kind);
  }
}

TEST(Kind, IsFoundByTheExactRawValueOnly) {
  for (const char* text : {"", "SRGB-JPG", "srgb jpg", "srgb-jp", "srgb-jpg ", " srgb-jpg", "jpeg", "JPG"}) {
    EXPECT_EQ(kindWithRawValue(text), std::nullopt) << text;
  }
  EXPECT_EQ(kindWithRawValue(std::string_view("jpg\0", 4)), std::nullopt);
}

TEST(Kind, IsEitherAJPEGKindOrKeepsTheFormat) {
  for (const Expected& row : table) {
    EXPECT_EQ(isJPEGKind(row.kind), row.jpeg) << row.rawValue;
    EXPECT_EQ(isFormatKeepingKind(row.kind), !row.jpeg) << row.rawValue;
  }
}

TEST(Kind, HashesAsItsRawValue) {
  for (const Expected& row : table) {
    EXPECT_EQ(std::hash<Kind>{}(row.kind), std::hash<std::string>{}(row.rawValue));
  }
  EXPECT_EQ(std::unordered_set<Kind>(allCases().begin(), allCases().end()).size(), std::size(table));
}

TEST_F(KindOfABundle, IsReadFromThePropertyList) { EXPECT_EQ(configured("invert"), Kind::invert); }

TEST_F(KindOfABundle, MayHaveWhiteSpaceAroundIt) {
  EXPECT_EQ(configured(" srgb-jpg\n"), Kind::sRGBJPEG);
  EXPECT_EQ(configured("\t\r\n jpg \v\f"), Kind::jpeg);
}

TEST_F(KindOfABundle, MayHaveUnicodeWhiteSpaceAroundIt) {
  for (const char* blank : {"\u00a0", "\u2028", "\u2029", "\u3000", "\u0085", "\u1680", "\u200b"}) {
    EXPECT_EQ(configured(blank + std::string("invert") + blank), Kind::invert) << blank;
  }
}

TEST_F(KindOfABundle, MayNotHaveWhiteSpaceInsideIt) {
  EXPECT_EQ(configured("srgb jpg"), std::nullopt);
  EXPECT_EQ(configured("srgb- jpg"), std::nullopt);
}

TEST_F(KindOfABundle, IsCaseSensitiveAndSpelledAsTheExtension) {
  EXPECT_EQ(configured("SRGB-JPG"), std::nullopt);
  EXPECT_EQ(configured("jpeg"), std::nullopt);
  EXPECT_EQ(configured(""), std::nullopt);
  EXPECT_EQ(configured(" \n"), std::nullopt);
}

TEST_F(KindOfABundle, IsNoneForAValueThatIsNoString) {
  EXPECT_EQ(configured(3), std::nullopt);
  EXPECT_EQ(configured(true), std::nullopt);
  EXPECT_EQ(configured(Array{Value("invert")}), std::nullopt);
  EXPECT_EQ(configured(Bytes{'j', 'p', 'g'}), std::nullopt);
}

TEST_F(KindOfABundle, IsNoneWithoutAValue) { EXPECT_EQ(configuredKind(), std::nullopt); }

TEST_F(KindOfABundle, HasTheBundlesDisplayNameAsTitleWhateverTheKind) {
  setDisplayName("Make it gray");
  for (const Kind kind : allCases()) EXPECT_EQ(displayTitle(kind), "Make it gray");
}

TEST_F(KindOfABundle, TakesTheDisplayNameExactlyAsStored) {
  setDisplayName(" ");
  EXPECT_EQ(displayTitle(Kind::invert), " ");
  setDisplayName(" Gray\n");
  EXPECT_EQ(displayTitle(Kind::invert), " Gray\n");
}

TEST_F(KindOfABundle, HasItsOwnTitleWithoutAUsableDisplayName) {
  for (const Expected& row : table) EXPECT_EQ(displayTitle(row.kind), row.title);
  setDisplayName("");
  EXPECT_EQ(displayTitle(Kind::invert), "Invert Color");
  EXPECT_EQ(displayTitle(Kind::jpeg), "Convert to JPG");
  setDisplayName(7);
  EXPECT_EQ(displayTitle(Kind::jpeg), "Convert to JPG");
}

}  // namespace
}  // namespace ostra::test
