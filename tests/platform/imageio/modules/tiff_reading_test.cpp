#include <bit>
#include <cmath>
#include <tuple>

#include <gtest/gtest.h>

#include "platform/imageio/codec.h"
#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/modules/tiff_files.h"
#include "tests/platform/imageio/picture_files.h"

namespace ostra::test {
namespace {

using Samples = std::vector<std::uint16_t>;

constexpr std::uint16_t kWhiteIsZero = 0, kBlackIsZero = 1, kRgb = 2, kPalette = 3, kInk = 5, kYcc = 6,
                        kCieLab = 8, kIccLab = 9;
constexpr std::uint16_t kPremultiplied = 1, kStraight = 2;

std::uint16_t scaled(long double value, long double most) {
  return static_cast<std::uint16_t>(std::floor(value * 65535 / most + 0.5L));
}

class TiffDepths : public testing::TestWithParam<std::tuple<int, bool>> {};

TEST_P(TiffDepths, AreScaledExactlyFromNothingToFull) {
  const auto bits = static_cast<unsigned>(std::get<0>(GetParam()));
  const bool bigEndian = std::get<1>(GetParam());
  const TiffBuilder builder(bigEndian);
  const std::uint64_t most = bits == 64 ? UINT64_MAX : (std::uint64_t{1} << bits) - 1;
  const std::vector<std::uint64_t> numbers = {0, most, most / 2, most / 3, most / 7 * 5, 1 & most, most - 1};
  Bytes packed = packedBits(numbers, bits, numbers.size());
  if (!bigEndian && bits % 8 == 0 && (bits == 24 || std::has_single_bit(bits))) {
    packed.clear();
    for (const std::uint64_t number : numbers) packed = joined({packed, builder.number(number, bits / 8)});
  }
  Samples expected;
  for (const std::uint64_t number : numbers) {
    expected.push_back(scaled(number, most));
  }
  for (const std::uint16_t photometry : {kBlackIsZero, kWhiteIsZero}) {
    const Pixels pixels =
        decoded(builder.build({builder.picture(static_cast<std::uint32_t>(numbers.size()), 1,
                                               static_cast<std::uint16_t>(bits), 1, photometry, packed)}));
    EXPECT_EQ(pixels.layout.model, CGColorSpaceModel::monochrome);
    EXPECT_EQ(pixels.layout.bitsPerComponent, bits <= 8 ? 8 : 16);
    const Samples gray = grayOf(pixels);
    ASSERT_EQ(gray.size(), expected.size());
    for (std::size_t i = 0; i < gray.size(); ++i) {
      const int wanted = photometry == kBlackIsZero ? expected[i] : 65535 - expected[i];
      // Half a step of the eight bits that are kept.
      EXPECT_NEAR(gray[i], wanted, bits < 8 ? 129 : bits > 32 ? 1 : 0) << bits << " bits, " << numbers[i];
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, TiffDepths, testing::Combine(testing::Range(1, 65), testing::Bool()));

// Signed samples lie around the middle.
TEST(TiffReading, OfSignedSamplesStartsFromTheLowest) {
  const TiffBuilder builder;
  for (const unsigned bytes : {1u, 2u, 4u}) {
    Bytes packed;
    const std::int64_t most = (std::int64_t{1} << (8 * bytes - 1)) - 1;
    for (const std::int64_t number : {-most - 1, std::int64_t{-1}, std::int64_t{0}, most})
      packed = joined({packed, builder.number(static_cast<std::uint64_t>(number), bytes)});
    const auto picture =
        with(builder.picture(4, 1, static_cast<std::uint16_t>(8 * bytes), 1, kBlackIsZero, packed),
             builder.shorts(339, {2}));
    const Samples gray = grayOf(decoded(builder.build({picture})));
    EXPECT_EQ(gray[0], 0);
    EXPECT_NEAR(gray[1], 32767, bytes == 1 ? 128 : 1);
    EXPECT_NEAR(gray[2], 32768, bytes == 1 ? 128 : 1);
    EXPECT_EQ(gray[3], 65535);
  }
}

TEST(TiffReading, PutsPremultipliedAlphaAsItIsAndSkipsFurtherSamples) {
  const TiffBuilder builder;
  const Bytes samples = {9, 50, 100, 25, 128, 77, 9, 0, 0, 0, 0, 77};
  // A sample that is nothing, then alpha, then another one.
  const Bytes pixels = {50, 100, 25, 9, 128, 77, 0, 0, 0, 9, 0, 77};
  const auto picture =
      with(builder.picture(2, 1, 8, 6, kRgb, pixels), builder.shorts(338, {0, kPremultiplied, 0}));
  const Pixels read = decoded(builder.build({picture}));
  EXPECT_EQ(read.layout.bitmapInfo, static_cast<CGBitmapInfo>(CGImageAlphaInfo::premultipliedLast));
  EXPECT_EQ(Bytes(read.bytes.view.begin(), read.bytes.view.end()), (Bytes{50, 100, 25, 128, 0, 0, 0, 0}));
  const auto straight = with(picture, builder.shorts(338, {kStraight, 0, 0}));
  const Pixels other = decoded(builder.build({straight}));
  EXPECT_EQ(other.layout.bitmapInfo, static_cast<CGBitmapInfo>(CGImageAlphaInfo::last));
  EXPECT_EQ(Bytes(other.bytes.view.begin(), other.bytes.view.end()), (Bytes{50, 100, 25, 9, 0, 0, 0, 9}));
}

TEST(TiffReading, OfSamplesOfUnknownMeaningTakesNoneForAlpha) {
  const TiffBuilder builder;
  const auto picture = builder.picture(1, 1, 8, 4, kRgb, {1, 2, 3, 4});
  for (const auto& directory : {picture, with(picture, builder.shorts(338, {0}))}) {
    const Pixels read = decoded(builder.build({directory}));
    EXPECT_EQ(read.layout.bitmapInfo, static_cast<CGBitmapInfo>(CGImageAlphaInfo::noneSkipLast));
    EXPECT_EQ(Bytes(read.bytes.view.begin(), read.bytes.view.end()), (Bytes{1, 2, 3, 255}));
  }
}

TEST(TiffReading, OfEntriesKnowsThePalettesThatAreWrittenInEightBits) {
  const TiffBuilder builder;
  const auto read = [&](std::uint16_t factor) {
    std::vector<std::uint16_t> map(12);
    for (std::uint16_t i = 0; i < 12; ++i) map[i] = static_cast<std::uint16_t>((20 * i) * factor);
    return decoded(
        builder.build({with(builder.picture(4, 1, 2, 1, kPalette, {0x1B}), builder.shorts(320, map))}));
  };
  for (const std::uint16_t factor : {std::uint16_t{1}, std::uint16_t{256}, std::uint16_t{257}}) {
    const Pixels pixels = read(factor);
    EXPECT_EQ(pixels.layout.bitsPerComponent, 8);
    EXPECT_EQ(Bytes(pixels.bytes.view.begin() + 4, pixels.bytes.view.begin() + 8), (Bytes{20, 100, 180, 255}))
        << factor;
  }
  EXPECT_EQ(read(200).layout.bitsPerComponent, 16);
  EXPECT_EQ(straightRgba16(read(200))[4], 4000);
}

TEST(TiffReading, OfEntriesReadsTheirAlpha) {
  const TiffBuilder builder;
  std::vector<std::uint16_t> map(48, 257);
  const auto picture =
      with(with(builder.picture(2, 1, 4, 2, kPalette, {0x1F, 0x27}), builder.shorts(320, map)),
           builder.shorts(338, {kStraight}));
  EXPECT_EQ(straightRgba16(decoded(builder.build({picture}))),
            (Samples{257, 257, 257, 65535, 257, 257, 257, 119 * 257}));
}

TEST(TiffReading, OfInkWithAlphaPutsItOnPaper) {
  const TiffBuilder builder;
  const auto picture = [&](std::uint16_t alpha) {
    const auto plain = builder.picture(1, 1, 8, 5, kInk, {200, 100, 0, 50, 51});
    return decoded(builder.build({with(plain, builder.shorts(338, {alpha}))}));
  };
  const Pixels straight = picture(kStraight), premultiplied = picture(kPremultiplied);
  EXPECT_EQ(straight.layout.model, CGColorSpaceModel::cmyk);
  EXPECT_EQ(straight.layout.bitsPerPixel, 32);
  EXPECT_EQ(Bytes(straight.bytes.view.begin(), straight.bytes.view.end()), (Bytes{40, 20, 0, 10}));
  EXPECT_EQ(Bytes(premultiplied.bytes.view.begin(), premultiplied.bytes.view.end()),
            (Bytes{200, 100, 0, 50}));
}

TEST(TiffReading, OfLabKnowsItsFourEncodings) {
  const TiffBuilder builder;
  // L 50, a -20, b 30.
  const Bytes byTiff8 = {128, static_cast<std::uint8_t>(-20), 30}, byProfiles8 = {128, 108, 158};
  const auto deep = [&](std::initializer_list<std::uint16_t> numbers) {
    Bytes bytes;
    for (const std::uint16_t number : numbers) bytes = joined({bytes, builder.number(number, 2)});
    return bytes;
  };
  const auto minus = static_cast<std::uint16_t>(-20 * 256);
  const Bytes byTiff16 = deep({32768, minus, 30 * 256}), byProfiles16 = deep({32640, 108 * 256, 158 * 256});
  const auto read = [&](std::uint16_t bits, std::uint16_t photometry, const Bytes& samples) {
    const Pixels pixels = decoded(builder.build({builder.picture(1, 1, bits, 3, photometry, samples)}));
    EXPECT_EQ(pixels.layout.bitsPerComponent, 16);
    EXPECT_EQ(std::get<NamedSpace>(pixels.profile).name, kCGColorSpaceROMMRGB);
    return straightRgba16(pixels);
  };
  // Of the formulas of CIE 1976 and the primaries of ISO 22028-2, calculated elsewhere.
  const Samples expected = {22149, 26899, 15373, 65535};
  const auto isNear = [&](const Samples& samples, int distance) {
    for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(samples[i], expected[i], distance) << i;
  };
  constexpr int kEightBitsOfLightness = 140;
  isNear(read(8, kCieLab, byTiff8), kEightBitsOfLightness);
  isNear(read(8, kIccLab, byProfiles8), kEightBitsOfLightness);
  isNear(read(16, kCieLab, byTiff16), 5);
  isNear(read(16, kIccLab, byProfiles16), 5);
}

TEST(TiffReading, OfYccWithoutJpegConvertsByItsOwnNumbers) {
  const TiffBuilder builder;
  // Two by two pixels share their colour: four of Y, then both of it.
  const Bytes pixels = {100, 150, 200, 250, 90, 170};
  auto picture = with(builder.picture(2, 2, 8, 3, kYcc, pixels), builder.shorts(530, {2, 2}));
  const Samples samples = straightRgba16(decoded(builder.build({picture})));
  for (std::size_t i = 0; i < 4; ++i) {
    const double y = pixels[i], cb = 90 - 128, cr = 170 - 128;
    const double wanted[] = {y + 1.402 * cr, y - 0.344136 * cb - 0.714136 * cr, y + 1.772 * cb};
    for (std::size_t c = 0; c < 3; ++c)
      EXPECT_NEAR(samples[4 * i + c] / 257.0, std::clamp(wanted[c], 0.0, 255.0), 1.5) << i << ' ' << c;
  }
}

// IPTC records are called words by many writers, of which some turn each.
TEST(TiffReading, FindsIptcRecordsHoweverTheyAreTyped) {
  const Bytes records = {0x1C, 2, 105, 0, 1, 'H', 0, 0};
  Bytes turned;
  for (std::size_t i = 0; i < records.size(); i += 4)
    turned.insert(turned.end(), {records[i + 3], records[i + 2], records[i + 1], records[i]});
  const TiffBuilder builder(true);
  const auto page = builder.picture(2, 1, 8, 1, kBlackIsZero, {10, 20});
  TiffBuilder::Entry words{33723, 4, 2, records}, turnedWords{33723, 4, 2, turned};
  for (const auto& entry : {builder.bytes(33723, 7, records), words, turnedWords}) {
    const Dictionary tree = propertiesOf(builder.build({with(page, entry)})).tree;
    ASSERT_TRUE(tree.contains("{IPTC}"));
    EXPECT_EQ(tree.at("{IPTC}").get<Dictionary>()->at("Headline"), Value("H"));
  }
}

}  // namespace
}  // namespace ostra::test
