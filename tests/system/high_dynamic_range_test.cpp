#include <array>

#include <gtest/gtest.h>

#include "tests/system/installed_program.h"

namespace ostra::test {
namespace {

/// Patches of gray, in a file that says its numbers are light up to 10,000 cd/m².
class HighDynamicRangePictures : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"convert", "avifenc", "avifdec", "exiftool"}) OSTRA_NEEDS_PROGRAM(name);
    program.installModules();
  }
  static void run(const std::vector<std::string>& words) {
    const ProgramResult result = runProgram(words);
    ASSERT_EQ(result.status, 0) << words[0] << ": " << result.errors;
  }
  std::string picture(const std::vector<double>& values, const char* transfer) const {
    std::vector<std::string> words = {"convert"};
    for (const double value : values)
      words.insert(words.end(), {"-size", "32x32", "xc:gray(" + std::to_string(100 * value) + "%)"});
    words.insert(words.end(),
                 {"+append", "-depth", "16", "-type", "TrueColor", "PNG48:" + folder.path("source.png")});
    run(words);
    const std::string path = folder.path("a.avif");
    run({"avifenc", "-s", "9", "-d", "12", "-y", "444", "--min", "0", "--max", "4", "--cicp",
         std::string("9/") + transfer + "/9", folder.path("source.png"), path});
    return path;
  }
  /// The middle of each patch, of 8 bits.
  std::vector<int> shown(const std::string& path, std::size_t patches) const {
    run({"avifdec", "-d", "16", path, folder.path("shown.png")});
    const ProgramResult result =
        runProgram({"convert", folder.path("shown.png"), "-crop", "32x32", "-gravity", "center", "-extent",
                    "1x1", "+append", "-depth", "8", "gray:-"});
    EXPECT_EQ(result.output.size(), patches);
    std::vector<int> samples;
    for (const char sample : result.output) samples.push_back(static_cast<unsigned char>(sample));
    return samples;
  }
  void expectShown(const std::string& path, const std::vector<int>& expected) const {
    const std::vector<int> found = shown(path, expected.size());
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_NEAR(found[i], expected[i], 1) << i;
  }

  InstalledProgram program;
  TemporaryFolder folder;
};

// In cd/m²: 10, 50, 100, 203 and 1,000, as BT.2100 encodes them and as BT.2390 and sRGB show them.
TEST_F(HighDynamicRangePictures, BecomeSRgbAsADisplayShowsThem) {
  const std::string path = picture({0.299699, 0.440282, 0.508078, 0.580689, 0.751827, 1}, "16");
  ASSERT_EQ(program.run({"srgb", path}).status, 0);
  expectShown(path, {63, 136, 186, 229, 255, 255});
}

TEST_F(HighDynamicRangePictures, OfHybridLogBecomeSRgbAsADisplayShowsThem) {
  const std::string path = picture({0.25, 0.38, 0.5, 0.75, 1}, "18");
  ASSERT_EQ(program.run({"srgb", path}).status, 0);
  expectShown(path, {61, 101, 137, 229, 255});
}

TEST_F(HighDynamicRangePictures, StaySoInTheirOwnColours) {
  const std::string path = picture({0.2, 0.6, 0.9}, "16");
  ASSERT_EQ(program.run({"invert", path}).status, 0);
  expectShown(path, {204, 102, 26});
  const ProgramResult told = runProgram({"exiftool", "-s3", "-ProfileDescription", path});
  EXPECT_EQ(told.output, "Rec. ITU-R BT.2100 PQ\n");
}

}  // namespace
}  // namespace ostra::test
