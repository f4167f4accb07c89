#include "platform/graphics/device_cmyk.h"

#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "platform/graphics/profile_transform.h"
#include "tests/platform/graphics/built_profiles.h"
#include "tests/platform/graphics/pictures.h"
#include "tests/platform/graphics/reference_colors.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {
namespace {

/// The tests of this program see no installed default profile; it is looked up at the first use only.
class NoInstalledProfiles : public testing::Environment {
 public:
  void SetUp() override {
    setenv("XDG_DATA_HOME", "/nonexistent", 1);
    setenv("XDG_DATA_DIRS", "/nonexistent", 1);
  }
};
const auto* const environment = testing::AddGlobalTestEnvironment(new NoInstalledProfiles);

CGColorSpaceRef cmyk() { return CGColorSpace::createWithName(kCGColorSpaceDeviceCMYK); }

TEST(DeviceCMYK, HasANameAndNoProfile) {
  EXPECT_EQ(cmyk()->model(), CGColorSpaceModel::cmyk);
  EXPECT_EQ(cmyk()->numberOfComponents(), 4);
  EXPECT_EQ(cmyk()->name(), kCGColorSpaceDeviceCMYK);
  EXPECT_TRUE(cmyk()->iccData().empty());
  EXPECT_EQ(cmyk(), cmyk());
}

TEST(DeviceCMYK, WithoutAnInstalledProfileFollowsThePlainFormula) {
  std::vector<unsigned> inks;
  std::vector<double> expected;
  for (unsigned c = 0; c < 256; c += 51)
    for (unsigned k = 0; k < 256; k += 15) {
      inks.insert(inks.end(), {c, 255 - c, 0, k});
      for (const unsigned ink : {c, 255 - c, 0u}) expected.push_back((1 - ink / 255.0) * (1 - k / 255.0));
    }
  const Picture picture{inks, 8, 4, CGImageAlphaInfo::none, cmyk()};
  const auto sRGB = drawn(picture, CGColorSpace::createWithName(kCGColorSpaceSRGB), 8, false);
  const auto gray = drawn(picture, CGColorSpace::createWithName(kCGColorSpaceGenericGrayGamma2_2), 8, false);
  for (std::size_t i = 0; i < expected.size(); ++i)
    ASSERT_NEAR(sRGB.at(i / 3 * 4 + i % 3), 255 * expected[i], 1);
  for (std::size_t i = 0; i < gray.size(); ++i) {
    const Values rgb(expected.begin() + static_cast<long>(3 * i),
                     expected.begin() + static_cast<long>(3 * i + 3));
    ASSERT_NEAR(gray[i], 255 * convertByNumbers(kCGColorSpaceSRGB, kCGColorSpaceGenericGrayGamma2_2, rgb)[0],
                1);
  }
}

TEST(DeviceCMYK, ByThePlainFormulaReachesTableProfilesToo) {
  const auto table = CGColorSpace::createWithICCData(rgbTableProfile());
  const auto sRGB = CGColorSpace::createWithName(kCGColorSpaceSRGB);
  const auto found = drawn({{0, 51, 102, 51}, 8, 4, CGImageAlphaInfo::none, cmyk()}, table, 8, false);
  const auto wanted = drawn({{204, 163, 122}, 8, 3, CGImageAlphaInfo::none, sRGB}, table, 8, false);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(found.at(i), wanted.at(i), 1);
}

TEST(DeviceCMYK, ReceivesColorsAsTheInverseOfTheFormula) {
  const auto sRGB = CGColorSpace::createWithName(kCGColorSpaceSRGB);
  const auto found =
      drawn({{255, 255, 255, 0, 0, 0, 204, 102, 0}, 8, 3, CGImageAlphaInfo::none, sRGB}, cmyk(), 8, false);
  const std::vector<unsigned> wanted = {0, 0, 0, 0, 0, 0, 0, 255, 0, 128, 255, 51};
  ASSERT_EQ(found.size(), wanted.size());
  for (std::size_t i = 0; i < wanted.size(); ++i) EXPECT_NEAR(found[i], wanted[i], 1) << i;
}

TEST(DeviceCMYK, TakesTheFirstUsableInstalledProfile) {
  const TemporaryFolder broken, missing, whole, rgb;
  const auto install = [](const TemporaryFolder& folder, const Bytes& profile) {
    std::filesystem::create_directories(folder.path("color/icc/ghostscript"));
    writeFile(folder.path("color/icc/ghostscript/default_cmyk.icc"), profile);
  };
  install(broken, Bytes(300, 7));
  install(rgb, rgbTableProfile());
  install(whole, cmykTableProfile());
  EXPECT_EQ(cmykProfileIn({broken.path(), missing.path(), rgb.path(), whole.path()}), cmykTableProfile());
  EXPECT_TRUE(cmykProfileIn({broken.path(), missing.path()}).empty());
  EXPECT_TRUE(cmykProfileIn({}).empty());
}

}  // namespace
}  // namespace ostra::test
