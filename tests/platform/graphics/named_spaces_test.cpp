#include <cmath>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/platform/graphics/pictures.h"
#include "tests/platform/graphics/reference_colors.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {
namespace {

struct Vector {
  unsigned in[3];
  unsigned out[6][3];
  unsigned gray;
};

constexpr std::string_view destinations[] = {kCGColorSpaceDisplayP3, kCGColorSpaceAdobeRGB1998,
                                             kCGColorSpaceROMMRGB,   kCGColorSpaceITUR_2020,
                                             kCGColorSpaceDCIP3,     kCGColorSpaceLinearSRGB};

constexpr Vector vectors[] = {
    {{255, 0, 0},
     {{234, 51, 35}, {219, 0, 0}, {179, 70, 26}, {202, 59, 19}, {242, 70, 53}, {255, 0, 0}},
     130},
    {{0, 255, 0},
     {{117, 251, 76}, {144, 255, 60}, {138, 237, 78}, {145, 245, 69}, {116, 251, 92}, {0, 255, 0}},
     220},
    {{0, 0, 255}, {{0, 0, 245}, {0, 0, 250}, {86, 35, 235}, {43, 13, 241}, {25, 29, 246}, {0, 0, 255}}, 70},
    {{128, 128, 128},
     {{128, 128, 128}, {127, 127, 127}, {109, 109, 109}, {115, 115, 115}, {141, 141, 141}, {55, 55, 55}},
     128},
    {{64, 128, 192},
     {{80, 126, 187}, {89, 127, 188}, {96, 107, 170}, {85, 113, 178}, {94, 140, 195}, {13, 55, 134}},
     123},
    {{200, 100, 50},
     {{187, 105, 62}, {177, 100, 56}, {143, 95, 50}, {161, 97, 47}, {198, 121, 79}, {147, 32, 8}},
     130},
    {{10, 10, 10}, {{10, 10, 10}, {18, 18, 18}, {10, 10, 10}, {3, 3, 3}, {27, 27, 27}, {1, 1, 1}}, 10},
};

void expectNear(const std::vector<unsigned>& found, const std::vector<unsigned>& wanted, unsigned tolerance,
                const std::string& what) {
  for (std::size_t i = 0; i < wanted.size(); ++i)
    EXPECT_NEAR(found.at(i), wanted[i], tolerance) << what << ", component " << i;
}

TEST(NamedSpaces, TurnPublishedSRGBColorsIntoTheirPublishedValues) {
  for (const Vector& vector : vectors) {
    const Picture picture{{vector.in, vector.in + 3},
                          8,
                          3,
                          CGImageAlphaInfo::none,
                          CGColorSpace::createWithName(kCGColorSpaceSRGB)};
    for (std::size_t i = 0; i < 6; ++i) {
      const auto found = drawn(picture, CGColorSpace::createWithName(destinations[i]), 8, false);
      expectNear(found, {vector.out[i], vector.out[i] + 3}, 1, std::string(destinations[i]));
    }
    const auto gray =
        drawn(picture, CGColorSpace::createWithName(kCGColorSpaceGenericGrayGamma2_2), 8, false);
    expectNear(gray, {vector.gray}, 1, "gray");
  }
}

TEST(NamedSpaces, BringDisplayP3ColorsIntoSRGBAndClipThem) {
  const Picture picture{{64, 128, 192, 200, 100, 50, 255, 0, 0, 0, 255, 0, 0, 0, 255},
                        8,
                        3,
                        CGImageAlphaInfo::none,
                        CGColorSpace::createWithName(kCGColorSpaceDisplayP3)};
  const auto found = drawn(picture, CGColorSpace::createWithName(kCGColorSpaceSRGB), 8, false);
  const std::vector<unsigned> wanted = {32, 130, 197, 255, 215, 93,  31, 255, 255, 0,
                                        0,  255, 0,   255, 0,   255, 0,  0,   255, 255};
  expectNear(found, wanted, 1, "P3 to sRGB");
}

TEST(NamedSpaces, KeepWhiteAndBlackInEveryPairOfSpaces) {
  for (const auto from : namedSpaces())
    for (const auto to : namedSpaces()) {
      const std::size_t n = isGray(from) ? 1 : 3;
      std::vector<unsigned> pixels(2 * n, 255);
      std::fill(pixels.begin() + static_cast<std::ptrdiff_t>(n), pixels.end(), 0);
      const Picture picture{pixels, 8, n, CGImageAlphaInfo::none, CGColorSpace::createWithName(from)};
      const auto found = drawn(picture, CGColorSpace::createWithName(to), 8, false);
      const std::size_t stored = isGray(to) ? 1 : 4;
      for (std::size_t i = 0; i < stored; ++i) EXPECT_EQ(found.at(i), 255u) << from << " to " << to;
      for (std::size_t i = 0; i < (isGray(to) ? 1 : 3); ++i)
        EXPECT_EQ(found.at(stored + i), 0u) << from << to;
    }
}

TEST(NamedSpaces, KeepEveryNeutralValueBetweenSRGBAndTheGraySpace) {
  const auto sRGB = CGColorSpace::createWithName(kCGColorSpaceSRGB);
  const auto gray = CGColorSpace::createWithName(kCGColorSpaceGenericGrayGamma2_2);
  for (unsigned v = 0; v < 256; ++v) {
    EXPECT_EQ(drawn({{v, v, v}, 8, 3, CGImageAlphaInfo::none, sRGB}, gray, 8, false).at(0), v);
    const auto back = drawn({{v}, 8, 1, CGImageAlphaInfo::none, gray}, sRGB, 8, false);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(back.at(i), v);
  }
}

TEST(NamedSpaces, ReportTheirModelNameAndDescription) {
  const std::pair<std::string_view, std::string_view> descriptions[] = {
      {kCGColorSpaceSRGB, "sRGB IEC61966-2.1"},
      {kCGColorSpaceDisplayP3, "Display P3"},
      {kCGColorSpaceAdobeRGB1998, "Adobe RGB (1998)"},
      {kCGColorSpaceROMMRGB, "ROMM RGB: ISO 22028-2:2013"},
      {kCGColorSpaceITUR_2020, "Rec. ITU-R BT.2020-1"},
      {kCGColorSpaceDCIP3, "SMPTE RP 431-2-2007 DCI (P3)"},
      {kCGColorSpaceLinearSRGB, "sRGB IEC61966-2.1 Linear"},
      {kCGColorSpaceGenericGrayGamma2_2, "Generic Gray Gamma 2.2 Profile"}};
  for (const auto& [name, description] : descriptions) {
    const auto space = CGColorSpace::createWithName(name);
    EXPECT_EQ(space->name(), name);
    EXPECT_EQ(space->profileDescription(), description);
    EXPECT_EQ(space->model(), isGray(name) ? CGColorSpaceModel::monochrome : CGColorSpaceModel::rgb);
    EXPECT_EQ(space->numberOfComponents(), isGray(name) ? 1 : 3);
    EXPECT_EQ(space, CGColorSpace::createWithName(name)) << "a name gives the same object every time";
  }
}

TEST(NamedSpaces, OfOtherNamesDoNotExist) {
  EXPECT_EQ(CGColorSpace::createWithName("kCGColorSpaceGenericLab"), nullptr);
  EXPECT_EQ(CGColorSpace::createWithName(""), nullptr);
}

TEST(NamedSpaces, AreRecognisedByTheirProfiles) {
  for (const auto name : namedSpaces()) {
    const auto space = CGColorSpace::createWithName(name);
    const Bytes copy(space->iccData().begin(), space->iccData().end());
    EXPECT_EQ(CGColorSpace::createWithICCData(copy), space);
  }
}

TEST(NamedSpaces, HaveProfilesThatNeverChange) {
  for (const auto name : namedSpaces()) {
    const ByteView profile = CGColorSpace::createWithName(name)->iccData();
    ASSERT_GT(profile.size(), 132u);
    EXPECT_EQ(profile[8], 4) << "version";
    const Bytes date(profile.begin() + 24, profile.begin() + 36);
    EXPECT_EQ(date, (Bytes{0x07, 0xE4, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(profile.size() % 4, 0u);
  }
}

/// Six lines of numbers in, six out; transicc reads values of 0 to 255 and prints them with decimals.
TEST(NamedSpaces, MeanTheSameToAnotherColorProgram) {
  OSTRA_NEEDS_PROGRAM("transicc");
  const TemporaryFolder folder;
  for (const auto name : namedSpaces())
    writeFile(folder.path(name), CGColorSpace::createWithName(name)->iccData());
  for (const auto to : namedSpaces()) {
    for (const Vector& vector : vectors) {
      const std::string input = std::to_string(vector.in[0]) + "\n" + std::to_string(vector.in[1]) + "\n" +
                                std::to_string(vector.in[2]) + "\n";
      const auto result =
          runProgram({"transicc", "-n", "-c0", "-i" + folder.path(kCGColorSpaceSRGB), "-o" + folder.path(to)},
                     {input, {}, false});
      ASSERT_EQ(result.status, 0) << result.errors;
      std::istringstream numbers(result.output);
      const Picture picture{{vector.in, vector.in + 3},
                            8,
                            3,
                            CGImageAlphaInfo::none,
                            CGColorSpace::createWithName(kCGColorSpaceSRGB)};
      const auto found = drawn(picture, CGColorSpace::createWithName(to), 8, false);
      for (std::size_t i = 0; i < (isGray(to) ? 1u : 3u); ++i) {
        double expected = -1;
        numbers >> expected;
        EXPECT_NEAR(found.at(i), expected, 1) << to << " component " << i << ": " << result.output;
      }
    }
  }
}

}  // namespace
}  // namespace ostra::test
