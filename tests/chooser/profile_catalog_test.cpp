#include "chooser/profile_catalog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/doubles/data_reading.h"
#include "tests/doubles/graphics_creation.h"
#include "tests/doubles/profile_enumeration.h"
#include "tests/platform/graphics/built_profiles.h"

namespace ostra::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Bytes profileOf(std::string_view name) {
  const ByteView icc = GraphicsCreation::standard().colorSpaceWithName(name)->iccData();
  return {icc.begin(), icc.end()};
}

std::vector<std::string> namesOf(const std::vector<OstraColorProfile>& profiles) {
  std::vector<std::string> names;
  for (const OstraColorProfile& profile : profiles) names.push_back(profile.name);
  return names;
}

class BuiltInProfiles : public testing::Test {
 protected:
  CallLog log_;
  RecordingGraphicsCreation graphics_{log_};
  Service<GraphicsCreation>::Override use_{graphics_};
};

TEST_F(BuiltInProfiles, AreTheEightWellKnownSpacesInTheirOrder) {
  const auto profiles = OstraColorProfileCatalog::builtIns();
  EXPECT_THAT(namesOf(profiles),
              ElementsAre("sRGB IEC61966-2.1", "Display P3", "Adobe RGB (1998)", "ProPhoto RGB (ROMM)",
                          "Rec. 2020 (ITU-R BT.2020)", "DCI-P3", "Linear sRGB", "Generic Gray Gamma 2.2"));
  EXPECT_THAT(log_.calls(),
              ElementsAre("space kCGColorSpaceSRGB", "space kCGColorSpaceDisplayP3",
                          "space kCGColorSpaceAdobeRGB1998", "space kCGColorSpaceROMMRGB",
                          "space kCGColorSpaceITUR_2020", "space kCGColorSpaceDCIP3",
                          "space kCGColorSpaceLinearSRGB", "space kCGColorSpaceGenericGrayGamma2_2"));
  EXPECT_EQ(profiles.at(1).space->name(), kCGColorSpaceDisplayP3);
  EXPECT_EQ(profiles.at(7).space->name(), kCGColorSpaceGenericGrayGamma2_2);
}

TEST_F(BuiltInProfiles, LeaveOutASpaceThatThePlatformCannotMake) {
  graphics_.missingSpaces = {std::string(kCGColorSpaceDCIP3)};
  const auto names = namesOf(OstraColorProfileCatalog::builtIns());
  ASSERT_EQ(names.size(), 7u);
  EXPECT_EQ(names[4], "Rec. 2020 (ITU-R BT.2020)");
  EXPECT_EQ(names[5], "Linear sRGB");
}

TEST_F(BuiltInProfiles, BeginWithTheFirstThatCanBeMade) {
  graphics_.missingSpaces = {std::string(kCGColorSpaceSRGB)};
  EXPECT_EQ(OstraColorProfileCatalog::builtIns().front().name, "Display P3");
}

class InstalledProfiles : public testing::Test {
 protected:
  InstalledProfiles() {
    reading_.files["/p3"] = profileOf(kCGColorSpaceDisplayP3);
    reading_.files["/adobe"] = profileOf(kCGColorSpaceAdobeRGB1998);
    reading_.files["/gray"] = profileOf(kCGColorSpaceGenericGrayGamma2_2);
    reading_.files["/junk"] = {1, 2, 3};
  }
  static std::vector<std::string> names() { return namesOf(OstraColorProfileCatalog::installed()); }

  CallLog log_;
  ScriptedProfileEnumeration found_{log_};
  RecordingDataReading reading_{log_};
  Service<ProfileEnumeration>::Override useFound_{found_};
  Service<DataReading>::Override useReading_{reading_};
};

TEST_F(InstalledProfiles, AreNoneWhereNoneIsInstalled) { EXPECT_THAT(names(), IsEmpty()); }

TEST_F(InstalledProfiles, HaveTheDescriptionAsNameAndTheSpaceOfTheFile) {
  found_.add("A Display", "/p3");
  found_.add("A Printer", "/gray", "GRAY", "prtr");
  const auto profiles = OstraColorProfileCatalog::installed();
  ASSERT_THAT(namesOf(profiles), ElementsAre("A Display", "A Printer"));
  EXPECT_EQ(profiles[0].space->name(), kCGColorSpaceDisplayP3);
  EXPECT_EQ(profiles[1].space->name(), kCGColorSpaceGenericGrayGamma2_2);
}

TEST_F(InstalledProfiles, AreListedAfreshAtEachCall) {
  EXPECT_THAT(names(), IsEmpty());
  found_.add("New", "/p3");
  EXPECT_THAT(names(), ElementsAre("New"));
}

TEST_F(InstalledProfiles, AreAllAskedForWhateverOneOfThemLacks) {
  const std::pair<std::string_view, std::variant<Value, URL>> wrong[] = {
      {kColorSyncProfileDescription, Value(7)},
      {kColorSyncProfileDescription, URL::fileURLWithPath("/x")},
      {kColorSyncProfileURL, Value("/p3")},
      {kColorSyncProfileColorSpace, Value(true)}};
  found_.profiles.emplace_back(std::nullopt);
  found_.profiles.emplace_back(ColorSyncProfileInfo{});
  for (const auto& [key, value] : wrong) {
    found_.add("Other kind", "/p3").insert_or_assign(std::string(key), value);
    ColorSyncProfileInfo& lacking = found_.add("Lacking", "/p3");
    lacking.erase(std::string(key));
  }
  found_.add("Whole", "/p3");
  EXPECT_THAT(names(), ElementsAre("Whole"));
  EXPECT_THAT(log_.callsBeginningWith({"enumeration"}), IsEmpty());
}

TEST_F(InstalledProfiles, AreKeptWithoutAClass) {
  found_.add("Absent", "/p3").erase(std::string(kColorSyncProfileClass));
  found_.add("Empty", "/p3", "RGB ", "");
  found_.add("Of another kind", "/p3").insert_or_assign(std::string(kColorSyncProfileClass), Value(1));
  EXPECT_THAT(names(), ElementsAre("Absent", "Empty", "Of another kind"));
}

TEST_F(InstalledProfiles, OfAnotherSpaceAreNeverListedAndNeverRead) {
  for (const char* space : {"CMYK", "Lab ", "XYZ ", "RGB", "rgb ", "RGB  ", "GRAY ", "Gray", ""}) {
    found_.add(std::string("Space ") + space, "/p3", space);
  }
  EXPECT_THAT(names(), IsEmpty());
  EXPECT_THAT(log_.callsBeginningWith({"read"}), IsEmpty());
}

TEST_F(InstalledProfiles, ThatDescribeNoDeviceAreNeverListedAndNeverRead) {
  for (const char* profileClass : {"link", "abst", "nmcl"}) {
    found_.add(profileClass, "/p3", "RGB ", profileClass);
  }
  EXPECT_THAT(names(), IsEmpty());
  EXPECT_THAT(log_.callsBeginningWith({"read"}), IsEmpty());
  for (const char* profileClass : {"mntr", "prtr", "scnr", "spac", "Link"}) {
    found_.add(profileClass, "/p3", "RGB ", profileClass);
  }
  EXPECT_THAT(names(), ElementsAre("Link", "mntr", "prtr", "scnr", "spac"));
}

// The two signatures travel as one key, whose empty pieces do not count.
TEST_F(InstalledProfiles, CountTheFirstPieceThatIsNotEmptyAsTheSpace) {
  found_.add("Class alone", "/p3", "", "RGB ");
  found_.add("Bar in front", "/p3", "|RGB ", "mntr");
  found_.add("Link behind a bar", "/p3", "RGB |", "link");
  EXPECT_THAT(names(), ElementsAre("Bar in front", "Class alone"));
}

TEST_F(InstalledProfiles, ThatCannotBeReadOrAreDamagedAreLeftOut) {
  found_.add("Damaged", "/junk");
  found_.add("Missing", "/missing");
  found_.add("Whole", "/adobe");
  EXPECT_THAT(names(), ElementsAre("Whole"));
  EXPECT_THAT(log_.callsBeginningWith({"read"}), ElementsAre("read /junk", "read /missing", "read /adobe"));
}

TEST_F(InstalledProfiles, WhoseContentsAreOfAnotherModelAreLeftOut) {
  reading_.files["/cmyk"] = cmykTableProfile();
  ASSERT_EQ(CGColorSpace::createWithICCData(reading_.files["/cmyk"])->model(), CGColorSpaceModel::cmyk);
  found_.add("Says RGB", "/cmyk", "RGB ");
  EXPECT_THAT(names(), IsEmpty());
  EXPECT_THAT(log_.callsBeginningWith({"read"}), ElementsAre("read /cmyk"));
}

TEST_F(InstalledProfiles, StandInTheOrderOfTheirNamesWhateverTheirLetterCase) {
  for (const char* name : {"beta", "Alpha 2", "_x", "alpha 10", "7", "Gamma"}) found_.add(name, "/p3");
  EXPECT_THAT(names(), ElementsAre("_x", "7", "alpha 10", "Alpha 2", "beta", "Gamma"));
}

TEST_F(InstalledProfiles, OfTheSameNameAreTheOneThatWasFoundFirst) {
  found_.add("Paper", "/adobe");
  found_.add("PAPER", "/p3");
  found_.add("paper", "/gray", "GRAY");
  const auto profiles = OstraColorProfileCatalog::installed();
  ASSERT_THAT(namesOf(profiles), ElementsAre("Paper"));
  EXPECT_EQ(profiles[0].space->name(), kCGColorSpaceAdobeRGB1998);
}

// So many that a sort which is not stable would mix them.
TEST_F(InstalledProfiles, OfTheSameNameKeepTheirOrderAmongMany) {
  for (int i = 0; i < 100; ++i) {
    found_.add("Paper", i == 0 ? "/adobe" : "/p3");
    found_.add("Canvas " + std::to_string(i), "/gray", "GRAY");
  }
  EXPECT_EQ(OstraColorProfileCatalog::installed().back().space->name(), kCGColorSpaceAdobeRGB1998);
}

TEST_F(InstalledProfiles, OfANameThatIsTakenAreNotRead) {
  found_.add("Paper", "/adobe");
  found_.add("PAPER", "/p3");
  EXPECT_THAT(names(), ElementsAre("Paper"));
  EXPECT_THAT(log_.callsBeginningWith({"read"}), ElementsAre("read /adobe"));
}

TEST_F(InstalledProfiles, TakeTheirNameOnlyOnceTheyProvedUsable) {
  reading_.files["/cmyk"] = cmykTableProfile();
  found_.add("PAPER", "/missing");
  found_.add("Paper", "/junk");
  found_.add("paPer", "/cmyk");
  found_.add("paper", "/p3", "RGB ", "link");
  found_.add("paper", "/p3", "CMYK");
  found_.add("papeR", "/p3");
  EXPECT_THAT(names(), ElementsAre("papeR"));
}

// Sorting may follow the language's habits; whether two names are the same may not.
TEST_F(InstalledProfiles, CompareNamesByUnicode) {
  found_.add("ÄÖÜ Ж", "/adobe");
  found_.add("äöü ж", "/p3");
  found_.add("aou ж", "/p3");
  EXPECT_EQ(names().size(), 2u);
}

TEST_F(InstalledProfiles, CalledLikeAWellKnownSpaceAreKeptHere) {
  found_.add("Display P3", "/p3");
  EXPECT_THAT(names(), ElementsAre("Display P3"));
}

}  // namespace
}  // namespace ostra::test
