#include "platform/colorsync/profile_facts.h"

#include <cstdlib>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/foundation/unique_fd.h"
#include "tests/support/icc_builder.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {
namespace {

class ProfileFactsTest : public testing::Test {
 protected:
  ProfileFactsTest() { setenv("LC_ALL", "C", 1); }
  ~ProfileFactsTest() override { unsetenv("LC_ALL"); }

  std::optional<ProfileFacts> factsOf(ByteView bytes) {
    writeFile(folder_.path("p.icc"), bytes);
    const UniqueFd file(open(folder_.path("p.icc").c_str(), O_RDONLY));
    return profileFacts(file.get());
  }
  std::string descriptionOf(ByteView bytes) {
    const auto facts = factsOf(bytes);
    return facts ? facts->description : "nothing";
  }

  TemporaryFolder folder_;
};

TEST_F(ProfileFactsTest, AreDescriptionSpaceAndClass) {
  const auto facts = factsOf(
      iccFile({"GRAY", "prtr", {{"cprt", descriptionTag("nobody")}, {"desc", descriptionTag("Paper")}}}));
  ASSERT_TRUE(facts);
  EXPECT_EQ(facts->description, "Paper");
  EXPECT_EQ(facts->colorSpace, "GRAY");
  EXPECT_EQ(facts->profileClass, "prtr");
}

// Whether a picture can be converted to it is for others to find out.
TEST_F(ProfileFactsTest, AreToldOfEveryClassAndSpace) {
  const auto facts = factsOf(iccFile({"CMYK", "link", {{"desc", descriptionTag("Link")}}}));
  ASSERT_TRUE(facts);
  EXPECT_EQ(facts->colorSpace + facts->profileClass, "CMYKlink");
}

TEST_F(ProfileFactsTest, PreferTheMultiLanguageNameBesideThePlainOne) {
  setenv("LC_ALL", "de_DE.UTF-8", 1);
  const IccParts parts{"RGB ",
                       "mntr",
                       {{"desc", descriptionTag("Screen")},
                        {"dscm", multiLanguageTag({{"enUS", u"Display"}, {"deDE", u"Bildschirm"}})}}};
  EXPECT_EQ(descriptionOf(iccFile(parts)), "Bildschirm");
}

TEST_F(ProfileFactsTest, TakeThePlainNameWhereTheMultiLanguageOneIsEmpty) {
  const IccParts parts{"RGB ", "mntr", {{"dscm", multiLanguageTag({})}, {"desc", descriptionTag("Screen")}}};
  EXPECT_EQ(descriptionOf(iccFile(parts)), "Screen");
}

TEST_F(ProfileFactsTest, NameTheProfileInOneLineWithoutControls) {
  EXPECT_EQ(descriptionOf(iccFile({"RGB ", "mntr", {{"desc", descriptionTag(" a\nb\x1b[2J\tc \n")}}})),
            "a b [2J c");
  EXPECT_EQ(
      descriptionOf(iccFile({"RGB ", "mntr", {{"desc", multiLanguageTag({{"enUS", u"a\u009bb\u2028c"}})}}})),
      "a b c");
}

TEST_F(ProfileFactsTest, AreNoneWithoutADescription) {
  EXPECT_FALSE(factsOf(iccFile({"RGB ", "mntr", {}})));
  EXPECT_FALSE(factsOf(iccFile({"RGB ", "mntr", {{"desc", descriptionTag(" \n ")}}})));
  EXPECT_FALSE(factsOf(iccFile({"RGB ", "mntr", {{"desc", Bytes{'d', 'e', 's', 'c'}}}})));
}

TEST_F(ProfileFactsTest, AreNoneOfAFileThatIsNoProfile) {
  EXPECT_FALSE(factsOf({}));
  EXPECT_FALSE(factsOf(Bytes(5000, 'x')));
  Bytes unsigned_ = iccFile({"RGB ", "mntr", {{"desc", descriptionTag("Name")}}});
  unsigned_[36] = 'A';
  EXPECT_FALSE(factsOf(unsigned_));
}

TEST_F(ProfileFactsTest, CanBeReadThoughTheProfileLiesAboutItsSize) {
  for (const std::uint32_t size : {0u, 1u, 100000u, 0xFFFFFFFFu}) {
    Bytes file = iccFile({"RGB ", "mntr", {{"desc", descriptionTag("Liar")}}});
    putNumber(file, 0, size);
    EXPECT_EQ(descriptionOf(file), "Liar");
  }
}

TEST_F(ProfileFactsTest, SurviveEveryCutAndEveryWrongNumber) {
  const Bytes whole = iccFile({"RGB ", "mntr", {{"desc", descriptionTag("Name", u"Näme")}}});
  for (std::size_t size = 0; size < whole.size(); ++size) factsOf(ByteView(whole).first(size));
  for (std::size_t at = 0; at + 4 <= whole.size(); ++at) {
    Bytes lying = whole;
    putNumber(lying, at, 0xFFFFFFF0);
    factsOf(lying);
  }
}

// A terabyte that is called a profile costs no more than another.
TEST_F(ProfileFactsTest, AreReadFromAnEnormousFileAtOnce) {
  const Bytes small = iccFile({"RGB ", "mntr", {{"desc", descriptionTag("Huge")}}});
  writeFile(folder_.path("huge.icc"), small);
  if (truncate(folder_.path("huge.icc").c_str(), off_t{1} << 40) != 0) GTEST_SKIP() << "no sparse files here";
  const UniqueFd file(open(folder_.path("huge.icc").c_str(), O_RDONLY));
  const auto facts = profileFacts(file.get());
  ASSERT_TRUE(facts);
  EXPECT_EQ(facts->description, "Huge");
}

TEST_F(ProfileFactsTest, LimitWhatATagMayCost) {
  Bytes tag = descriptionTag("Long");
  tag.resize(300000);
  EXPECT_EQ(descriptionOf(iccFile({"RGB ", "mntr", {{"desc", tag}}})), "Long");
}

}  // namespace
}  // namespace ostra::test
