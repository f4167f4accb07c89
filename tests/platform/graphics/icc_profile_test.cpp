#include <algorithm>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "tests/platform/graphics/built_profiles.h"
#include "tests/platform/graphics/pictures.h"
#include "tests/platform/graphics/reference_colors.h"

namespace ostra::test {
namespace {

Bytes copyOf(std::string_view name) {
  const ByteView profile = CGColorSpace::createWithName(name)->iccData();
  return {profile.begin(), profile.end()};
}

/// A profile like a named one in all but its bytes.
Bytes almost(std::string_view name) {
  Bytes profile = copyOf(name);
  profile[35] = 1;  // a second later
  return profile;
}

Bytes withNumber(Bytes profile, std::size_t offset, std::uint32_t value) {
  for (std::size_t i = 0; i < 4; ++i) profile[offset + i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
  return profile;
}

bool isAccepted(ByteView profile) { return CGColorSpace::createWithICCData(profile) != nullptr; }

TEST(ICCProfile, GivesASpaceOfItsModel) {
  const struct {
    Bytes profile;
    CGColorSpaceModel model;
    int components;
  } profiles[] = {{almost(kCGColorSpaceDisplayP3), CGColorSpaceModel::rgb, 3},
                  {almost(kCGColorSpaceGenericGrayGamma2_2), CGColorSpaceModel::monochrome, 1},
                  {cmykTableProfile(), CGColorSpaceModel::cmyk, 4},
                  {rgbTableProfile(), CGColorSpaceModel::rgb, 3},
                  {curveTableProfile(1024), CGColorSpaceModel::rgb, 3},
                  {grayLabProfile(), CGColorSpaceModel::monochrome, 1}};
  for (const auto& [profile, model, components] : profiles) {
    const auto space = CGColorSpace::createWithICCData(profile);
    ASSERT_NE(space, nullptr);
    EXPECT_EQ(space->model(), model);
    EXPECT_EQ(space->numberOfComponents(), components);
    EXPECT_EQ(space->name(), std::nullopt);
    EXPECT_EQ(Bytes(space->iccData().begin(), space->iccData().end()), profile) << "the bytes are kept";
  }
}

TEST(ICCProfile, TellsItsDescription) {
  EXPECT_EQ(CGColorSpace::createWithICCData(almost(kCGColorSpaceDisplayP3))->profileDescription(),
            "Display P3");
  EXPECT_EQ(CGColorSpace::createWithICCData(cmykTableProfile())->profileDescription(), "A table");
}

TEST(ICCProfile, TellsADescriptionOfAnyScriptInUTF8) {
  Bytes profile = copyOf(kCGColorSpaceDisplayP3);
  const std::u16string text = u"Gr\u00FCn \u4E2D\U0001F308";  // as long as the old one
  const std::u16string old = u"Display P3";
  const std::size_t start = 132 + 12 * 10 + 28;  // the first tag's text
  for (std::size_t i = 0; i < old.size(); ++i) {
    const char16_t character = i < text.size() ? text[i] : u' ';
    ASSERT_EQ(profile[start + 2 * i + 1], old[i]);
    profile[start + 2 * i] = static_cast<std::uint8_t>(character >> 8);
    profile[start + 2 * i + 1] = static_cast<std::uint8_t>(character);
  }
  EXPECT_EQ(CGColorSpace::createWithICCData(profile)->profileDescription(), "Gr\u00FCn \u4E2D\U0001F308  ");
}

TEST(ICCProfile, ToleratesADescriptionThatRunsOutOfItsTag) {
  const Bytes profile = almost(kCGColorSpaceDisplayP3);
  const std::size_t text = 132 + 12 * 10;
  for (const std::uint32_t value : {0u, 1u, 21u, 0x7FFFFFFFu, 0xFFFFFFFFu})
    for (const std::size_t field : {8, 12, 20, 24}) {
      const auto space = CGColorSpace::createWithICCData(withNumber(profile, text + field, value));
      EXPECT_LE(space ? space->profileDescription().size() : 0, profile.size());
    }
}

TEST(ICCProfile, OfAnUnsuitableClassIsRefused) {
  for (const auto& profile : {copyOf(kCGColorSpaceSRGB), cmykTableProfile()}) {
    EXPECT_FALSE(isAccepted(withHeaderText(profile, 12, "link")));
    EXPECT_FALSE(isAccepted(withHeaderText(profile, 12, "abst")));
    EXPECT_FALSE(isAccepted(withHeaderText(profile, 12, "nmcl")));
    EXPECT_FALSE(isAccepted(withHeaderText(profile, 12, "none")));
    EXPECT_TRUE(isAccepted(withHeaderText(profile, 12, "scnr")));
  }
}

TEST(ICCProfile, IsRefusedWhenItsHeaderIsNotSound) {
  const Bytes profile = almost(kCGColorSpaceSRGB);
  const auto size = static_cast<std::uint32_t>(profile.size());
  EXPECT_TRUE(isAccepted(profile));
  EXPECT_FALSE(isAccepted(withHeaderText(profile, 36, "asep")));
  EXPECT_FALSE(isAccepted(withHeaderText(profile, 16, "none")));
  EXPECT_FALSE(isAccepted(withNumber(profile, 0, size + 1)));
  EXPECT_FALSE(isAccepted(withNumber(profile, 0, 0)));
  EXPECT_FALSE(isAccepted(withNumber(profile, 0, 0xFFFFFFFF)));
  for (const int version : {0, 1, 5, 9}) {
    Bytes other = profile;
    other[8] = static_cast<std::uint8_t>(version);
    EXPECT_FALSE(isAccepted(other)) << version;
  }
  for (const int version : {2, 3, 4}) {
    Bytes other = profile;
    other[8] = static_cast<std::uint8_t>(version);
    EXPECT_TRUE(isAccepted(other)) << version;
  }
}

// Readers of PNG take a profile with more bytes than it counts for a broken one.
TEST(ICCProfile, EndsWhereItsHeaderSays) {
  const Bytes profile = gammaProfile(1.9, 2.1);
  Bytes longer = profile;
  longer.insert(longer.end(), 100, 0x5A);
  const auto space = CGColorSpace::createWithICCData(longer);
  ASSERT_NE(space, nullptr);
  EXPECT_TRUE(std::ranges::equal(space->iccData(), profile));
  Bytes named = copyOf(kCGColorSpaceDisplayP3);
  named.push_back(0);
  EXPECT_EQ(CGColorSpace::createWithICCData(named)->name(), kCGColorSpaceDisplayP3);
}

TEST(ICCProfile, IsRefusedWhenItsTagsLieOutside) {
  const Bytes profile = almost(kCGColorSpaceSRGB);
  for (const std::uint32_t count : {0u, 101u, 0x7FFFFFFFu, 0x15555556u, 0xFFFFFFFFu})
    EXPECT_FALSE(isAccepted(withNumber(profile, 128, count))) << count;
  for (const std::uint32_t offset : {0u, 64u, 0x7FFFFFF0u, 0xFFFFFFFFu})
    EXPECT_FALSE(isAccepted(withNumber(profile, 136, offset))) << offset;
  for (const std::uint32_t size : {0u, 7u, 0x7FFFFFF0u, 0xFFFFFFFFu})
    EXPECT_FALSE(isAccepted(withNumber(profile, 140, size))) << size;
}

TEST(ICCProfile, IsRefusedWhenCutAnywhere) {
  for (const Bytes& profile : {almost(kCGColorSpaceSRGB), gammaProfile(2.2, 2.1)})
    for (std::size_t length = 0; length < profile.size(); ++length)
      ASSERT_FALSE(isAccepted(ByteView(profile).first(length))) << length;
}

TEST(ICCProfile, IsRefusedWhenItConvertsNothing) {
  const Bytes profile = almost(kCGColorSpaceSRGB);
  EXPECT_FALSE(isAccepted(withHeaderText(profile, 16, "CMYK")));
  EXPECT_FALSE(isAccepted(withHeaderText(profile, 16, "GRAY")));
  EXPECT_FALSE(isAccepted(withHeaderText(profile, 132 + 12 * 4, "none"))) << "without its red";
}

TEST(ICCProfile, IsNotSomeJunk) {
  std::mt19937 random(3);
  std::uniform_int_distribution<int> byte(0, 255);
  Bytes junk(300);
  for (auto& value : junk) value = static_cast<std::uint8_t>(byte(random));
  EXPECT_FALSE(isAccepted(junk));
  EXPECT_FALSE(isAccepted({}));
}

/// A damaged profile may still be one. Then it must be good for drawing, or spoil the surface; nothing worse.
void drawWithEverything(const CGColorSpaceRef& space) {
  const auto n = static_cast<std::size_t>(space->numberOfComponents());
  for (const auto alpha : {CGImageAlphaInfo::none, CGImageAlphaInfo::last}) {
    const std::size_t perPixel = n + (alpha == CGImageAlphaInfo::none ? 0 : 1);
    drawn({std::vector<unsigned>(perPixel * 3, 100), 8, perPixel, alpha, space},
          CGColorSpace::createWithName(kCGColorSpaceSRGB), 8, true);
  }
  if (n != 1 && n != 3) return;
  const Picture back{{1, 2, 3, 255, 254, 253},
                     8,
                     3,
                     CGImageAlphaInfo::none,
                     CGColorSpace::createWithName(kCGColorSpaceSRGB)};
  const auto surface = makeSurface(2, space, 8, false);
  if (surface) surface->drawImage(all(*surface), *makeImage(back));
}

TEST(ICCProfile, WithFlippedBitsNeverDoesHarm) {
  std::mt19937 random(5);
  for (const Bytes& whole :
       {almost(kCGColorSpaceSRGB), almost(kCGColorSpaceGenericGrayGamma2_2), cmykTableProfile(),
        rgbTableProfile(), curveTableProfile(64), gammaProfile(1.8, 2.1)}) {
    // Headers and tag tables are where the harm would be; the rest gets its share.
    std::uniform_int_distribution<std::size_t> anywhere(0, whole.size() - 1), early(0, 420);
    std::uniform_int_distribution<int> bit(0, 7);
    for (int round = 0; round < 250; ++round) {
      Bytes damaged = whole;
      for (int flips = 0; flips <= round % 4; ++flips)
        damaged[round % 3 == 0 ? anywhere(random) : early(random)] ^=
            static_cast<std::uint8_t>(1 << bit(random));
      if (const auto space = CGColorSpace::createWithICCData(damaged)) drawWithEverything(space);
    }
  }
}

constexpr double sRGBWhite[] = {0.3127, 0.3290};
constexpr double sRGBPrimaries[] = {0.64, 0.33, 0.30, 0.60, 0.15, 0.06};

TEST(CalibratedSpace, HasTheColorantsThatItsChromaticitiesImply) {
  const auto space = CGColorSpace::createCalibrated(sRGBWhite, &sRGBPrimaries, 1);
  ASSERT_NE(space, nullptr);
  EXPECT_EQ(space->model(), CGColorSpaceModel::rgb);
  EXPECT_EQ(space->name(), std::nullopt);
  for (const auto& pixel : {std::vector<unsigned>{255, 0, 0}, {12, 200, 99}, {64, 64, 64}}) {
    const auto found = drawn({pixel, 8, 3, CGImageAlphaInfo::none, space},
                             CGColorSpace::createWithName(kCGColorSpaceSRGB), 8, false);
    const Values wanted = convertByNumbers(kCGColorSpaceLinearSRGB, kCGColorSpaceSRGB,
                                           {pixel[0] / 255.0, pixel[1] / 255.0, pixel[2] / 255.0});
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(found.at(i), 255 * wanted[i], 1.01);
  }
}

TEST(CalibratedSpace, OfGrayHasTheGammaAlone) {
  const auto space = CGColorSpace::createCalibrated(sRGBWhite, nullptr, 2.5);
  ASSERT_NE(space, nullptr);
  EXPECT_EQ(space->model(), CGColorSpaceModel::monochrome);
  const auto linear = CGColorSpace::createWithName(kCGColorSpaceLinearSRGB);
  for (unsigned v = 0; v < 256; v += 15)
    EXPECT_NEAR(drawn({{v}, 8, 1, CGImageAlphaInfo::none, space}, linear, 8, false).at(1),
                255 * std::pow(v / 255.0, 2.5), 1.01);
}

TEST(CalibratedSpace, IsRefusedForNumbersThatMakeNone) {
  const double nan = std::nan("");
  const double noWhite[] = {0, 0}, dark[] = {0.3, 0}, outside[] = {0.8, 0.7}, unknown[] = {nan, nan};
  const double inOneLine[] = {0.1, 0.1, 0.2, 0.2, 0.3, 0.3}, same[] = {0.3, 0.3, 0.3, 0.3, 0.3, 0.3};
  const double unknownRed[] = {nan, 0.33, 0.30, 0.60, 0.15, 0.06},
               huge[] = {1e9, 1e9, 0.30, 0.60, 0.15, 0.06};
  for (const auto& white : {noWhite, dark, outside, unknown})
    EXPECT_EQ(CGColorSpace::createCalibrated({white[0], white[1]}, &sRGBPrimaries, 2.2), nullptr);
  EXPECT_EQ(CGColorSpace::createCalibrated(noWhite, nullptr, 2.2), nullptr);
  EXPECT_EQ(CGColorSpace::createCalibrated(sRGBWhite, &inOneLine, 2.2), nullptr);
  EXPECT_EQ(CGColorSpace::createCalibrated(sRGBWhite, &same, 2.2), nullptr);
  EXPECT_EQ(CGColorSpace::createCalibrated(sRGBWhite, &unknownRed, 2.2), nullptr);
  EXPECT_EQ(CGColorSpace::createCalibrated(sRGBWhite, &huge, 2.2), nullptr);
  for (const double gamma : {0.0, -1.0, 1e6, nan})
    EXPECT_EQ(CGColorSpace::createCalibrated(sRGBWhite, &sRGBPrimaries, gamma), nullptr) << gamma;
}

}  // namespace
}  // namespace ostra::test
