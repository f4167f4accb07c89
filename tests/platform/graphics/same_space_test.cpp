#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "tests/platform/graphics/pictures.h"

namespace ostra::test {
namespace {

CGColorSpaceRef space(std::string_view name = kCGColorSpaceAdobeRGB1998) {
  return CGColorSpace::createWithName(name);
}

std::vector<unsigned> randomValues(std::size_t count, unsigned most) {
  std::mt19937 random(11);
  std::uniform_int_distribution<unsigned> value(0, most);
  std::vector<unsigned> values(count);
  for (unsigned& v : values) v = value(random);
  return values;
}

TEST(SameSpace, CopiesOpaquePixelsBitForBit) {
  for (const std::size_t bits : {8, 16}) {
    const unsigned most = bits == 8 ? 255 : 65535;
    const auto values = randomValues(3 * 1001, most);
    const auto found = drawn({values, bits, 3, CGImageAlphaInfo::none, space()}, space(), bits, false);
    for (std::size_t i = 0; i < 1001; ++i) {
      for (std::size_t c = 0; c < 3; ++c) ASSERT_EQ(found.at(4 * i + c), values[3 * i + c]);
      ASSERT_EQ(found.at(4 * i + 3), most);
    }
    const auto grays = randomValues(1001, most);
    const auto gray = space(kCGColorSpaceGenericGrayGamma2_2);
    EXPECT_EQ(drawn({grays, bits, 1, CGImageAlphaInfo::none, gray}, gray, bits, false), grays);
  }
  const auto inks = randomValues(400, 255);
  const auto cmyk = space(kCGColorSpaceDeviceCMYK);
  EXPECT_EQ(drawn({inks, 8, 4, CGImageAlphaInfo::none, cmyk}, cmyk, 8, false), inks);
}

TEST(SameSpace, IsAlsoTwoSpacesOfOneProfile) {
  const double white[] = {0.3127, 0.329}, primaries[] = {0.63, 0.34, 0.295, 0.605, 0.155, 0.077};
  const auto one = CGColorSpace::createCalibrated(white, &primaries, 1.8);
  const Bytes copy(one->iccData().begin(), one->iccData().end());
  const auto values = randomValues(300, 255);
  const auto found =
      drawn({values, 8, 3, CGImageAlphaInfo::none, one}, CGColorSpace::createWithICCData(copy), 8, false);
  for (std::size_t i = 0; i < 300; ++i) ASSERT_EQ(found.at(i / 3 * 4 + i % 3), values[i]);
}

TEST(SameSpace, ReadsEveryPlaceOfTheFourthComponent) {
  const std::vector<unsigned> last = {1, 2, 3, 255}, first = {255, 1, 2, 3};
  const std::vector<unsigned> wanted = {1, 2, 3, 255};
  for (const auto alpha :
       {CGImageAlphaInfo::last, CGImageAlphaInfo::premultipliedLast, CGImageAlphaInfo::noneSkipLast})
    EXPECT_EQ(drawn({last, 8, 4, alpha, space()}, space(), 8, true), wanted);
  for (const auto alpha :
       {CGImageAlphaInfo::first, CGImageAlphaInfo::premultipliedFirst, CGImageAlphaInfo::noneSkipFirst})
    EXPECT_EQ(drawn({first, 8, 4, alpha, space()}, space(), 8, true), wanted);
}

TEST(SameSpace, TakesASkippedComponentForOpaque) {
  const std::vector<unsigned> pixels = {1, 2, 3, 0};
  EXPECT_EQ(drawn({pixels, 8, 4, CGImageAlphaInfo::noneSkipLast, space()}, space(), 8, true),
            (std::vector<unsigned>{1, 2, 3, 255}));
}

TEST(SameSpace, PremultipliesEveryByteByEveryAlphaRoundingToNearest) {
  std::vector<unsigned> pixels;
  for (unsigned c = 0; c < 256; ++c)
    for (unsigned a = 0; a < 256; ++a) pixels.insert(pixels.end(), {c, 255 - c, c / 2, a});
  const auto found = drawn({pixels, 8, 4, CGImageAlphaInfo::last, space()}, space(), 8, true);
  const auto white = drawnOverWhite({pixels, 8, 4, CGImageAlphaInfo::last, space()}, space(), 8);
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    const double alpha = pixels[i / 4 * 4 + 3] / 255.0;
    const double product = i % 4 == 3 ? pixels[i] : pixels[i] * alpha;
    ASSERT_EQ(found.at(i), std::lround(product));
    if (i % 4 != 3) {
      ASSERT_EQ(white.at(i), std::lround(product + 255 * (1 - alpha)));
    }
  }
}

TEST(SameSpace, KeepsPremultipliedBytesAsTheyAre) {
  std::vector<unsigned> pixels;
  for (unsigned a = 0; a < 256; ++a)
    for (unsigned c = 0; c <= a; ++c) pixels.insert(pixels.end(), {c, a - c, c / 2, a});
  EXPECT_EQ(drawn({pixels, 8, 4, CGImageAlphaInfo::premultipliedLast, space()}, space(), 8, true), pixels);
}

TEST(SameSpace, BoundsPremultipliedColorByItsAlpha) {
  EXPECT_EQ(
      drawn({{200, 10, 255, 100}, 8, 4, CGImageAlphaInfo::premultipliedLast, space()}, space(), 8, true),
      (std::vector<unsigned>{100, 10, 100, 100}));
}

TEST(SameSpace, PremultipliesWordsRoundingToNearest) {
  const auto pixels = randomValues(4 * 3000, 65535);
  const auto found = drawn({pixels, 16, 4, CGImageAlphaInfo::last, space()}, space(), 16, true);
  const auto white = drawnOverWhite({pixels, 16, 4, CGImageAlphaInfo::last, space()}, space(), 16);
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    const double alpha = pixels[i / 4 * 4 + 3] / 65535.0;
    const double product = i % 4 == 3 ? pixels[i] : pixels[i] * alpha;
    ASSERT_EQ(found.at(i), std::lround(product));
    if (i % 4 != 3) {
      ASSERT_EQ(white.at(i), std::lround(product + 65535 * (1 - alpha)));
    }
  }
}

TEST(SameSpace, WidensBytesAndRoundsWords) {
  const auto gray = space(kCGColorSpaceGenericGrayGamma2_2);
  std::vector<unsigned> bytes, words;
  for (unsigned v = 0; v < 256; ++v) bytes.push_back(v);
  for (unsigned v = 0; v < 65536; ++v) words.push_back(v);
  const auto wide = drawn({bytes, 8, 1, CGImageAlphaInfo::none, gray}, gray, 16, false);
  for (unsigned v = 0; v < 256; ++v) ASSERT_EQ(wide.at(v), v * 257);
  const auto narrow = drawn({words, 16, 1, CGImageAlphaInfo::none, gray}, gray, 8, false);
  for (unsigned v = 0; v < 65536; ++v) ASSERT_EQ(narrow.at(v), std::lround(v / 257.0));
}

TEST(SameSpace, RoundsOnceWhenDepthAndAlphaMeet) {
  const auto words = randomValues(4 * 2000, 65535), bytes = randomValues(4 * 2000, 255);
  const auto narrow = drawn({words, 16, 4, CGImageAlphaInfo::last, space()}, space(), 8, true);
  const auto wide = drawn({bytes, 8, 4, CGImageAlphaInfo::last, space()}, space(), 16, true);
  for (std::size_t i = 0; i < words.size(); ++i) {
    const double wordAlpha = i % 4 == 3 ? 1 : words[i / 4 * 4 + 3] / 65535.0;
    const double byteAlpha = i % 4 == 3 ? 1 : bytes[i / 4 * 4 + 3] / 255.0;
    ASSERT_EQ(narrow.at(i), std::lround(words[i] / 257.0 * wordAlpha));
    ASSERT_EQ(wide.at(i), std::lround(bytes[i] * 257.0 * byteAlpha));
  }
}

TEST(SameSpace, LeavesGrayTimesAlphaOnAZeroedGraySurface) {
  const auto gray = space(kCGColorSpaceGenericGrayGamma2_2);
  const Picture picture{{200, 128, 200, 0, 10, 255}, 8, 2, CGImageAlphaInfo::last, gray};
  EXPECT_EQ(drawn(picture, gray, 8, false), (std::vector<unsigned>{100, 0, 10}));
  EXPECT_EQ(drawnOverWhite(picture, gray, 8), (std::vector<unsigned>{227, 255, 10}));
}

TEST(SameSpace, TakesAPictureWithoutASpaceForTheDefaultOfItsComponents) {
  const auto rgb = randomValues(300, 255);
  const auto found = drawn({rgb, 8, 3, CGImageAlphaInfo::none, nullptr}, space(kCGColorSpaceSRGB), 8, false);
  for (std::size_t i = 0; i < 300; ++i) ASSERT_EQ(found.at(i / 3 * 4 + i % 3), rgb[i]);
  EXPECT_EQ(
      drawn({rgb, 8, 1, CGImageAlphaInfo::none, nullptr}, space(kCGColorSpaceGenericGrayGamma2_2), 8, false),
      rgb);
  EXPECT_EQ(drawn({rgb, 8, 4, CGImageAlphaInfo::none, nullptr}, space(kCGColorSpaceDeviceCMYK), 8, false),
            rgb);
}

TEST(SameSpace, PaintsAMaskOfAlphaAloneInBlack) {
  const Picture mask{{0, 128, 255}, 8, 1, CGImageAlphaInfo::only, nullptr};
  EXPECT_EQ(drawn(mask, space(kCGColorSpaceSRGB), 8, true),
            (std::vector<unsigned>{0, 0, 0, 0, 0, 0, 0, 128, 0, 0, 0, 255}));
  EXPECT_EQ(drawnOverWhite(mask, space(kCGColorSpaceGenericGrayGamma2_2), 8),
            (std::vector<unsigned>{255, 127, 0}));
}

}  // namespace
}  // namespace ostra::test
