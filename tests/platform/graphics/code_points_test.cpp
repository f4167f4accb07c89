#include "platform/graphics/code_points.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "platform/graphics/high_dynamic_range.h"
#include "tests/platform/graphics/pictures.h"

namespace ostra::test {
namespace {

constexpr auto kRGB = CGColorSpaceModel::rgb, kGray = CGColorSpaceModel::monochrome;

TEST(CodePoints, ThatANamedSpaceSaysAreThatSpace) {
  EXPECT_EQ(spaceOfCodePoints(1, 13, kRGB)->name(), kCGColorSpaceSRGB);
  EXPECT_EQ(spaceOfCodePoints(1, 8, kRGB)->name(), kCGColorSpaceLinearSRGB);
  EXPECT_EQ(spaceOfCodePoints(12, 13, kRGB)->name(), kCGColorSpaceDisplayP3);
  for (const unsigned transfer : {1u, 6u, 14u, 15u})
    EXPECT_EQ(spaceOfCodePoints(9, transfer, kRGB)->name(), kCGColorSpaceITUR_2020);
  EXPECT_EQ(spaceOfCodePoints(1, 13, kGray)->name(), kCGColorSpaceGenericGrayGamma2_2);
}

TEST(CodePoints, ThatNoSpaceSaysAreNone) {
  constexpr unsigned kUnspecified = 2;
  for (const auto model : {kRGB, kGray})
    for (const unsigned transfer : {0u, kUnspecified, 9u, 10u, 17u, 255u})
      EXPECT_EQ(spaceOfCodePoints(9, transfer, model), nullptr) << transfer;
  for (const unsigned primaries : {0u, kUnspecified, 3u, 10u, 23u, 255u})
    EXPECT_EQ(spaceOfCodePoints(primaries, 13, kRGB), nullptr) << primaries;
}

// Light of a value, straight from the standard's formulas.
double lightOf(unsigned transfer, double v) {
  switch (transfer) {
    case 4:
      return std::pow(v, 2.2);
    case 5:
      return std::pow(v, 2.8);
    case 8:
      return v;
    case 13:
      return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    default:
      return v < 4.5 * 0.018053968510807 ? v / 4.5
                                         : std::pow((v + 0.099296826809442) / 1.099296826809442, 1 / 0.45);
  }
}

TEST(CodePoints, HaveTheCurvesOfTheStandard) {
  const auto linear = CGColorSpace::createWithName(kCGColorSpaceLinearSRGB);
  for (const unsigned transfer : {1u, 4u, 5u, 6u, 8u, 13u, 14u, 15u})
    for (const auto& [primaries, model] : {std::pair{1u, kRGB}, {22u, kRGB}, {1u, kGray}})
      for (unsigned v = 0; v <= 65535; v += 1311) {
        const auto space = spaceOfCodePoints(primaries, transfer, model);
        ASSERT_NE(space, nullptr) << primaries << " " << transfer;
        const std::size_t components = model == kGray ? 1 : 3;
        const auto found =
            drawn({std::vector<unsigned>(components, v), 16, components, CGImageAlphaInfo::none, space},
                  linear, 16, false);
        // Curves and colourants are stored as multiples of 1/65536.
        EXPECT_NEAR(found.at(1), 65535 * lightOf(transfer, v / 65535.0), 12) << transfer << " of " << v;
      }
}

// Beside a space calibrated with the standard's numbers, in a space wide enough to clip none of them.
TEST(CodePoints, HaveThePrimariesOfTheStandard) {
  struct Row {
    unsigned number;
    double white[2], primaries[6];
  };
  const Row rows[] = {{1, {.3127, .329}, {.64, .33, .30, .60, .15, .06}},
                      {4, {.310, .316}, {.67, .33, .21, .71, .14, .08}},
                      {5, {.3127, .329}, {.64, .33, .29, .60, .15, .06}},
                      {6, {.3127, .329}, {.63, .34, .31, .595, .155, .07}},
                      {7, {.3127, .329}, {.63, .34, .31, .595, .155, .07}},
                      {8, {.310, .316}, {.681, .319, .243, .692, .145, .049}},
                      {11, {.314, .351}, {.68, .32, .265, .69, .15, .06}},
                      {12, {.3127, .329}, {.68, .32, .265, .69, .15, .06}},
                      {22, {.3127, .329}, {.63, .34, .295, .605, .155, .077}}};
  const auto wide = CGColorSpace::createWithName(kCGColorSpaceROMMRGB);
  for (const Row& row : rows) {
    const auto space = spaceOfCodePoints(row.number, 4, kRGB);
    const auto same = CGColorSpace::createCalibrated(row.white, &row.primaries, 2.2);
    ASSERT_NE(space, nullptr) << row.number;
    for (const auto& pixel : {std::vector<unsigned>{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {99, 12, 180}}) {
      const auto found = drawn({pixel, 8, 3, CGImageAlphaInfo::none, space}, wide, 16, false);
      const auto wanted = drawn({pixel, 8, 3, CGImageAlphaInfo::none, same}, wide, 16, false);
      for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(found.at(i), wanted.at(i), 8) << row.number;
    }
  }
}

// The curve is one of a display; that more is meant stands beside it.
TEST(CodePoints, OfHighDynamicRangeAreASpaceThatTellsThem) {
  constexpr std::uint8_t kPerceptualQuantizer = 16, kHybridLog = 18;
  const auto linear = CGColorSpace::createWithName(kCGColorSpaceLinearSRGB);
  for (const std::uint8_t transfer : {kPerceptualQuantizer, kHybridLog}) {
    const auto space = spaceOfCodePoints(9, transfer, kRGB);
    ASSERT_NE(space, nullptr);
    EXPECT_EQ(space->model(), kRGB);
    EXPECT_EQ(space->profileDescription(),
              transfer == kHybridLog ? "Rec. ITU-R BT.2100 HLG" : "Rec. ITU-R BT.2100 PQ");
    const Bytes told = {'c', 'i', 'c', 'p', 0, 0, 0, 0, 9, transfer, 0, 1};
    const ByteView profile = space->iccData();
    EXPECT_NE(std::search(profile.begin(), profile.end(), told.begin(), told.end()), profile.end());

    const auto curve = transfer == kHybridLog ? hybridLogGammaCurve() : perceptualQuantizerCurve();
    const auto gray = spaceOfCodePoints(2, transfer, kGray);
    ASSERT_NE(gray, nullptr);
    for (std::size_t i = 0; i < curve.size(); i += 33) {
      const auto v = static_cast<unsigned>((i * 65535 + 511) / 1023);
      EXPECT_NEAR(drawn({{v, v, v}, 16, 3, CGImageAlphaInfo::none, space}, linear, 16, false).at(1), curve[i],
                  24);
      EXPECT_NEAR(drawn({{v}, 16, 1, CGImageAlphaInfo::none, gray}, linear, 16, false).at(1), curve[i], 24);
    }
  }
}

}  // namespace
}  // namespace ostra::test
