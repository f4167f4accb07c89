#include <gtest/gtest.h>

#include "platform/graphics/color_space.h"
#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

// A converted picture says what its colours are: a wrong statement shows wrong colours though every sample be
// right.

namespace ostra::test {
namespace {

Bytes profileOf(std::string_view space) {
  const ByteView profile = CGColorSpace::createWithName(space)->iccData();
  return {profile.begin(), profile.end()};
}

class WrittenColour : public testing::Test {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    OSTRA_NEEDS_PROGRAM("exiftool");
  }

  // The path of a fresh picture in Display P3, or untagged.
  std::string picture(const std::string& name, bool tagged, const std::vector<std::string>& more = {}) const {
    std::vector<std::string> settings = more;
    writeFile(folder.path("p3.icc"), profileOf(kCGColorSpaceDisplayP3));
    if (tagged) settings.insert(settings.end(), {"-profile", folder.path("p3.icc")});
    makePicture(folder.path(name), settings);
    return folder.path(name);
  }
  void run(const std::vector<std::string>& action, const std::string& path) const {
    std::vector<std::string> words = action;
    words.push_back(path);
    const ProgramResult result = program.run(words);
    ASSERT_EQ(result.status, 0) << result.errors;
  }
  /// As exiftool takes it out of the file.
  static Bytes profileIn(const std::string& path) {
    const ProgramResult result = runProgram({"exiftool", "-b", "-ICC_Profile", path});
    return {result.output.begin(), result.output.end()};
  }
  static bool hasChunk(const std::string& path, std::string_view type) {
    const Bytes bytes = readFile(path);
    return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()).find(type) !=
           std::string_view::npos;
  }
  void expectSRgbMark(const std::string& path) const {
    EXPECT_TRUE(hasChunk(path, "sRGB"));
    EXPECT_FALSE(hasChunk(path, "iCCP"));
    EXPECT_FALSE(hasChunk(path, "gAMA"));
    EXPECT_FALSE(hasChunk(path, "cHRM"));
    EXPECT_FALSE(hasChunk(path, "cICP"));
  }
  void expectProfile(const std::string& path, std::string_view space) const {
    EXPECT_EQ(profileIn(path), profileOf(space)) << path;
  }

  InstalledProgram program;
  TemporaryFolder folder;
};

TEST_F(WrittenColour, OfAPngInSRgbIsTheMarkAlone) {
  for (const bool tagged : {false, true}) {
    const std::string path = picture("a.png", tagged);
    run({"srgb"}, path);
    expectSRgbMark(path);
  }
}

TEST_F(WrittenColour, OfAJpegInSRgbIsTheProfile) {
  const std::string path = picture("a.jpg", true);
  run({"srgb"}, path);
  expectProfile(path, kCGColorSpaceSRGB);
  const std::string source = picture("b.png", true);
  run({"srgb-jpg"}, source);
  expectProfile(folder.path("b.jpg"), kCGColorSpaceSRGB);
}

TEST_F(WrittenColour, OfGrayIsTheGrayProfile) {
  for (const char* name : {"a.png", "a.jpg"}) {
    const std::string path = picture(name, true);
    run({"grayscale"}, path);
    expectProfile(path, kCGColorSpaceGenericGrayGamma2_2);
  }
}

TEST_F(WrittenColour, OfAnInvertedOrFlattenedPictureIsItsOwn) {
  for (const char* name : {"a.png", "a.jpg"}) {
    const std::string path = picture(name, true);
    run({"invert"}, path);
    expectProfile(path, kCGColorSpaceDisplayP3);
  }
  const std::string source = picture("b.png", true);
  run({"jpg"}, source);
  expectProfile(folder.path("b.jpg"), kCGColorSpaceDisplayP3);
}

TEST_F(WrittenColour, OfAConversionToAProfileIsThatProfile) {
  for (const char* name : {"a.png", "a.jpg"}) {
    const std::string path = picture(name, false);
    run({"convert-color-profile", "--profile", "Adobe RGB (1998)"}, path);
    expectProfile(path, kCGColorSpaceAdobeRGB1998);
  }
}

}  // namespace
}  // namespace ostra::test
