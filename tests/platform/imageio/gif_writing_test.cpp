#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/profile_space.h"
#include "tests/platform/imageio/gif_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

constexpr const char* kType = "com.compuserve.gif";

// A picture of so many random colours, each of them there, in runs.
Pixels colourful(std::size_t colours, bool alpha, unsigned seed = 1) {
  GifParts parts;
  parts.seed = seed;
  const Bytes palette = randomBytes(colours * 3, seed + 50), entries = gifEntries(parts);
  Bytes samples;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const std::size_t entry = i < colours ? i : entries[i] % colours;
    const bool hidden = alpha && (i / kWidth) % 5 == 4;
    for (std::size_t c = 0; c < 3; ++c) samples.push_back(hidden ? std::uint8_t{0} : palette[3 * entry + c]);
    samples.push_back(hidden ? 0 : 255);
  }
  return pixelsOf(samples, kWidth, kHeight, CGColorSpaceModel::rgb, 8,
                  alpha ? CGImageAlphaInfo::last : CGImageAlphaInfo::noneSkipLast);
}

double psnr(const std::vector<std::uint16_t>& a, const std::vector<std::uint16_t>& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const double difference = (a[i] - b[i]) / 65535.0;
    sum += difference * difference;
  }
  return sum == 0 ? 999 : 10 * std::log10(static_cast<double>(a.size()) / sum);
}

std::string toldByGiftext(const Bytes& file) {
  const TemporaryFolder folder;
  writeFile(folder.path("a.gif"), file);
  return run({"giftext", folder.path("a.gif")});
}

class GifExact : public testing::TestWithParam<std::size_t> {
 protected:
  void SetUp() override { OSTRA_NEEDS_PROGRAM("convert"); }
};

TEST_P(GifExact, IsReadBackWithoutAnyDifferenceByUsAndByImageMagick) {
  const Pixels pixels = colourful(GetParam(), false);
  const Bytes file = encoded(kType, pixels);
  EXPECT_EQ(asRgba16(decoded(file)), asRgba16(pixels));
  EXPECT_EQ(coalescedByImageMagick(file), asRgba16(pixels));
}

TEST_P(GifExact, StaysSoWithTransparencyWhereAnEntryIsLeft) {
  if (GetParam() == 256) GTEST_SKIP() << "no entry is left";
  const Pixels pixels = colourful(GetParam(), true);
  const Bytes file = encoded(kType, pixels);
  EXPECT_EQ(asRgba16(decoded(file)), asRgba16(pixels));
  EXPECT_EQ(coalescedByImageMagick(file), asRgba16(pixels));
}

TEST_P(GifExact, HasAPaletteOfAPowerOfTwo) {
  OSTRA_NEEDS_PROGRAM("giftext");
  const Bytes file = encoded(kType, colourful(GetParam(), false));
  std::size_t entries = 2;
  while (entries < GetParam()) entries *= 2;
  EXPECT_EQ(std::size_t{2} << (file[10] & 7), entries);
  const std::string told = toldByGiftext(file);
  EXPECT_NE(told.find("GIF file terminated normally"), std::string::npos) << told;
  EXPECT_NE(told.find("Width = 47, Height = 33"), std::string::npos) << told;
}

INSTANTIATE_TEST_SUITE_P(NumbersOfColours, GifExact,
                         testing::Values(1, 2, 3, 4, 5, 8, 9, 31, 64, 129, 200, 254, 255, 256));

// 256 colours, each of them once, on a transparent ground.
Bytes allEntriesOnAGround(std::uint32_t width, std::uint32_t height, std::uint32_t left, std::uint32_t top) {
  const Bytes palette = randomBytes(256 * 3, 21);
  Bytes samples(std::size_t{4} * width * height);
  for (std::size_t entry = 0; entry < 256; ++entry) {
    const std::size_t at = 4 * ((top + entry / 32) * width + left + entry % 32);
    std::copy_n(palette.begin() + static_cast<std::ptrdiff_t>(3 * entry), 3,
                samples.begin() + static_cast<std::ptrdiff_t>(at));
    samples[at + 3] = 255;
  }
  return samples;
}

TEST(GifWriting, OfAllEntriesAndABorderStoresTheRectangle) {
  OSTRA_NEEDS_PROGRAM("convert");
  const Pixels pixels =
      pixelsOf(allEntriesOnAGround(60, 50, 4, 9), 60, 50, CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::last);
  const Bytes file = encoded(kType, pixels);
  EXPECT_EQ(asRgba16(decoded(file)), asRgba16(pixels));
  EXPECT_EQ(coalescedByImageMagick(file), asRgba16(pixels));
}

// One colour has to go, and no hole may be filled.
TEST(GifWriting, OfAllEntriesAroundAHoleKeepsTheHole) {
  Bytes samples = allEntriesOnAGround(32, 9, 0, 1);
  std::copy_n(samples.begin() + 4 * 40, 4, samples.begin());  // and something in the first row
  const Pixels pixels = pixelsOf(samples, 32, 9, CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::last);
  const auto back = asRgba16(decoded(encoded(kType, pixels))), expected = asRgba16(pixels);
  for (std::size_t i = 0; i < back.size(); i += 4) {
    ASSERT_EQ(back[i + 3], expected[i + 3]) << i / 4;
    for (std::size_t c = 0; c < 3; ++c) ASSERT_NEAR(back[i + c], expected[i + c], 20 * 257) << i / 4;
  }
}

TEST(GifWriting, OfASinglePixelAndOfNoVisibleOneWorks) {
  for (const std::uint8_t alpha : {std::uint8_t{0}, std::uint8_t{255}}) {
    const Bytes samples(4, alpha);
    const Pixels pixels = pixelsOf(samples, 1, 1, CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::last);
    EXPECT_EQ(asRgba16(decoded(encoded(kType, pixels))), asRgba16(pixels));
  }
}

TEST(GifWriting, MakesLessThanHalfOpacityTransparentAndTheRestOpaque) {
  Bytes samples;
  for (unsigned alpha = 0; alpha < 256; ++alpha)
    samples.insert(samples.end(), {9, 8, 7, static_cast<std::uint8_t>(alpha)});
  const auto back = asRgba16(
      decoded(encoded(kType, pixelsOf(samples, 256, 1, CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::last))));
  for (std::size_t alpha = 0; alpha < 256; ++alpha) {
    EXPECT_EQ(back[4 * alpha + 3], alpha < 128 ? 0 : 65535) << alpha;
    EXPECT_EQ(back[4 * alpha], alpha < 128 ? 0 : 9 * 257) << alpha;
  }
}

TEST(GifWriting, OfGrayStaysGray) {
  for (const unsigned bits : {8u, 16u}) {
    for (const bool alpha : {false, true}) {
      const Pixels pixels =
          pixelsOf(softSamples(64, 48, alpha ? 2 : 1, bits), 64, 48, CGColorSpaceModel::monochrome, bits,
                   alpha ? CGImageAlphaInfo::last : CGImageAlphaInfo::none);
      const auto expected = asRgba16(pixels), back = asRgba16(decoded(encoded(kType, pixels)));
      ASSERT_EQ(back.size(), expected.size());
      for (std::size_t i = 0; i < back.size(); i += 4) {
        const bool hidden = expected[i + 3] < 32768;
        ASSERT_EQ(back[i + 3], hidden ? 0 : 65535);
        ASSERT_NEAR(back[i], hidden ? 0 : expected[i], bits == 8 ? 0 : 129) << i / 4;
        ASSERT_TRUE(back[i] == back[i + 1] && back[i] == back[i + 2]) << i / 4;
      }
    }
  }
}

// A palette is red, green and blue, and so is its profile: the levels become those that mean the same in
// sRGB.
TEST(GifWriting, OfAGraySpaceWithAnotherCurveKeepsWhatLevelsMean) {
  Bytes samples(256);
  for (std::size_t i = 0; i < 256; ++i) samples[i] = static_cast<std::uint8_t>(i);
  Pixels pixels = pixelsOf(samples, 256, 1, CGColorSpaceModel::monochrome, 8, CGImageAlphaInfo::none);
  const double white[2] = {0.3457, 0.3585};
  const CGColorSpaceRef linear = CGColorSpace::createCalibrated(white, nullptr, 1.0);
  pixels.profile = profileOfSpace(linear);
  const Pixels back = decoded(encoded(kType, pixels));
  EXPECT_TRUE(std::holds_alternative<Untagged>(back.profile));
  for (std::size_t i = 0; i < 256; ++i) {
    const double light = static_cast<double>(i) / 255;
    const double stored = light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
    ASSERT_NEAR(back.bytes.view[4 * i], 255 * stored, 1.0) << i;
  }
}

TEST(GifWriting, OfInkOrOfTooLongASideIsRefused) {
  const auto isRefused = [](const Pixels& pixels) {
    return std::holds_alternative<Fault>(CodecDoor::standard().encode(kType, pixels, nullptr));
  };
  EXPECT_TRUE(isRefused(pixelsOf(Bytes(4), 1, 1, CGColorSpaceModel::cmyk, 8, CGImageAlphaInfo::none)));
  EXPECT_TRUE(
      isRefused(pixelsOf(Bytes(65536), 65536, 1, CGColorSpaceModel::monochrome, 8, CGImageAlphaInfo::none)));
  EXPECT_FALSE(
      isRefused(pixelsOf(Bytes(65535), 65535, 1, CGColorSpaceModel::monochrome, 8, CGImageAlphaInfo::none)));
}

TEST(GifWriting, GivesTheSameBytesForTheSamePixels) {
  const Pixels pixels =
      pixelsOf(randomBytes(100 * 100 * 3), 100, 100, CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::none);
  EXPECT_EQ(encoded(kType, pixels), encoded(kType, pixels));
}

class GifQuantised : public testing::TestWithParam<int> {};

// Photograph-like pictures of many colours, against another program's palette of the same size.
TEST_P(GifQuantised, IsNoFartherFromThePictureThanImageMagicksPalette) {
  OSTRA_NEEDS_PROGRAM("convert");
  const TemporaryFolder folder;
  const char* const kinds[] = {"plasma:tomato-steelblue", "plasma:", "plasma:fractal", "gradient:red-blue"};
  run({"convert", "-size", "300x200", "-seed", std::to_string(GetParam()), kinds[GetParam() % 4],
       "-attenuate", "0.4", "+noise", "Gaussian", "-depth", "8", folder.path("a.png")});
  run({"convert", folder.path("a.png"), "-dither", "None", "-colors", "256", folder.path("peer.png")});
  const auto picture = rgba16ByImageMagick(folder.path("a.png"));
  const double peers = psnr(rgba16ByImageMagick(folder.path("peer.png")), picture);
  const Bytes file = encoded(kType, decoded(readFile(folder.path("a.png"))));
  const double ours = psnr(asRgba16(decoded(file)), picture);
  RecordProperty("psnr", std::to_string(ours) + " against " + std::to_string(peers));
  EXPECT_GE(ours, peers);
  EXPECT_LT(ours, 999) << "a picture of few colours shows nothing";
}

INSTANTIATE_TEST_SUITE_P(Seeds, GifQuantised, testing::Range(1, 9));

TEST(GifQuantisedTransparency, KeepsWhatIsTransparent) {
  Bytes samples = softSamples(120, 90, 4, 8);
  for (std::size_t i = 3; i < samples.size(); i += 4) samples[i] = i / 4 % 120 < 30 ? 0 : 255;
  const Pixels pixels = pixelsOf(samples, 120, 90, CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::last);
  const auto back = asRgba16(decoded(encoded(kType, pixels))), expected = asRgba16(pixels);
  for (std::size_t i = 0; i < back.size(); i += 4) {
    ASSERT_EQ(back[i + 3], expected[i + 3]);
    for (std::size_t c = 0; c < 3; ++c)
      ASSERT_NEAR(back[i + c], back[i + 3] == 0 ? 0 : expected[i + c], 30 * 257) << i / 4;
  }
}

}  // namespace
}  // namespace ostra::test
