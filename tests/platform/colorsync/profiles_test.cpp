#include "platform/colorsync/profiles.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/foundation/characters.h"
#include "tests/support/icc_builder.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSystemProfiles = "/usr/share/color/icc";

std::string textAt(const ColorSyncProfileInfo& info, const char* key) {
  return *std::get<Value>(info.at(key)).get<std::string>();
}

std::string trimmed(const std::string& text) { return std::string(trimWhitespaceAndNewlines(text)); }

std::vector<std::string> linesOf(const ProgramResult& told) {
  std::vector<std::string> lines;
  std::istringstream stream(told.output);
  for (std::string line; std::getline(stream, line);) lines.push_back(trimmed(line));
  return lines;
}

/// The user's folder holds what the test puts there. The system's fixed folders may hold more.
class InstalledProfilesEnumeration : public testing::Test {
 protected:
  InstalledProfilesEnumeration() {
    fs::create_directory(folder_.path("icc"));
    setenv("XDG_DATA_HOME", folder_.path().c_str(), 1);
    setenv("XDG_DATA_DIRS", "/nowhere", 1);
    setenv("LC_ALL", "C", 1);
  }
  ~InstalledProfilesEnumeration() override {
    for (const char* variable : {"XDG_DATA_HOME", "XDG_DATA_DIRS", "LC_ALL"}) unsetenv(variable);
  }

  void install(const std::string& name, const IccParts& parts) {
    writeFile(folder_.path("icc/" + name), iccFile(parts));
  }

  TemporaryFolder folder_;
};

TEST_F(InstalledProfilesEnumeration, TellsOfEachProfileWhatItsHeaderAndDescriptionSay) {
  install("a.icc", {"CMYK", "prtr", {{"desc", descriptionTag("Paper")}}});
  install("b.icc", {"RGB ", "mntr", {}});
  install("c.icc", {"RGB ", "link", {{"desc", descriptionTag("Link")}}});
  std::vector<ColorSyncProfileInfo> infos;
  ColorSyncIterateInstalledProfiles([&](const ColorSyncProfileInfo* info) {
    infos.push_back(*info);
    return infos.size() < 2;
  });
  ASSERT_EQ(infos.size(), 2u);
  EXPECT_EQ(infos[0], (ColorSyncProfileInfo{{"ProfileDescription", Value("Paper")},
                                            {"ProfileURL", URL::fileURLWithPath(folder_.path("icc/a.icc"))},
                                            {"ProfileColorSpace", Value("CMYK")},
                                            {"ProfileClass", Value("prtr")}}));
  EXPECT_EQ(std::get<Value>(infos[1].at("ProfileClass")), Value("link"));
}

TEST_F(InstalledProfilesEnumeration, EndsWhenTheCallbackWantsNoMore) {
  for (const char* name : {"a.icc", "b.icc", "c.icc"})
    install(name, {"RGB ", "mntr", {{"desc", descriptionTag(name)}}});
  int calls = 0;
  ColorSyncIterateInstalledProfiles([&calls](const ColorSyncProfileInfo*) { return ++calls < 2; });
  EXPECT_EQ(calls, 2);
}

// What another program reads in the same files, in one of their languages.
TEST_F(InstalledProfilesEnumeration, NamesTheSystemsProfilesAsExiftoolDoes) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  if (!fs::is_directory(kSystemProfiles)) GTEST_SKIP() << "no profiles in " << kSystemProfiles;
  setenv("XDG_DATA_DIRS", "/usr/share", 1);
  int seen = 0;
  ColorSyncIterateInstalledProfiles([&seen](const ColorSyncProfileInfo* info) {
    const std::string path = std::get<URL>(info->at("ProfileURL")).path();
    if (!path.starts_with(kSystemProfiles)) return true;
    EXPECT_THAT(linesOf(runProgram({"exiftool", "-a", "-s3", "-ICC_Profile:ProfileDescription*",
                                    "-ICC_Profile:ColorSpaceData", path})),
                testing::IsSupersetOf(
                    {textAt(*info, "ProfileDescription"), trimmed(textAt(*info, "ProfileColorSpace"))}))
        << path;
    return ++seen < 12;
  });
  EXPECT_GT(seen, 5);
}

}  // namespace
}  // namespace ostra::test
