#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>

#include <gtest/gtest.h>

#include "platform/graphics/color_space.h"
#include "tests/platform/imageio/bmp_files.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

using Masks = std::array<std::uint32_t, 4>;

struct Kind {
  const char* name;
  std::uint32_t headerSize;
  unsigned bits;
  std::uint32_t compression = 0;
  Masks masks{};
  bool topDown = false;
  /// How far ImageMagick may be away; nothing where it does not read the variant, or not as it is described.
  std::optional<int> peer = 0;
};
// It repeats the highest bits of a narrow sample instead of scaling it.
constexpr int kHalfStep = 129, kStep = 257;

constexpr Masks k555 = {0x7C00, 0x03E0, 0x001F, 0}, k888 = {0xFF0000, 0xFF00, 0xFF, 0};

// Random bits in every variant; no palette is smaller than what random indices need.
BmpParts partsOf(const Kind& kind, std::uint32_t width, std::uint32_t height) {
  BmpParts parts;
  parts.headerSize = kind.headerSize;
  parts.width = width;
  parts.height = static_cast<std::int32_t>(height) * (kind.topDown ? -1 : 1);
  parts.bits = kind.bits;
  parts.compression = kind.compression;
  parts.masks = kind.masks;
  if (kind.bits <= 8) {
    parts.palette = randomBytes((std::size_t{1} << kind.bits) * (kind.headerSize == 12 ? 3 : 4), 7);
    parts.palette[0] ^= 0x40;  // not gray
  }
  parts.data = randomBytes(bmpRowBytes(width, kind.bits) * height, 5);
  return parts;
}

// The picture as the format's description has it, pixel by pixel.
std::vector<std::uint16_t> expectedOf(const BmpParts& parts, std::uint32_t height) {
  const Masks masks = parts.compression != 0 ? parts.masks : parts.bits == 16 ? k555 : k888;
  const bool deep = parts.bits > 8 && std::any_of(masks.begin(), masks.end(),
                                                  [](std::uint32_t mask) { return std::popcount(mask) > 8; });
  std::vector<std::uint16_t> samples;
  for (std::uint32_t y = 0; y < height; ++y) {
    const std::size_t stored = parts.height < 0 ? y : height - 1 - y;
    const std::uint8_t* row = &parts.data[stored * bmpRowBytes(parts.width, parts.bits)];
    for (std::uint32_t x = 0; x < parts.width; ++x) {
      std::uint32_t pixel = 0;
      if (parts.bits < 8) {
        pixel = row[x * parts.bits / 8] >> (8 - parts.bits - x * parts.bits % 8) & ((1U << parts.bits) - 1);
      } else {
        for (unsigned i = 0; i < parts.bits / 8; ++i)
          pixel |= std::uint32_t{row[x * parts.bits / 8 + i]} << 8 * i;
      }
      for (std::size_t c = 0; c < 4; ++c) {
        if (parts.bits <= 8) {
          const std::size_t entry = parts.headerSize == 12 ? 3 : 4;
          samples.push_back(
              static_cast<std::uint16_t>(c == 3 ? 65535 : parts.palette[pixel * entry + 2 - c] * 257));
        } else if (masks[c] == 0) {
          samples.push_back(c == 3 ? 65535 : 0);
        } else {
          const int shift = std::countr_zero(masks[c]);
          const std::uint32_t most = masks[c] >> shift, value = (pixel & masks[c]) >> shift;
          const double full = deep ? 65535 : 255;
          const double sample = std::floor(static_cast<double>(value) / most * full + 0.5);
          samples.push_back(static_cast<std::uint16_t>(deep ? sample : sample * 257));
        }
      }
    }
  }
  return samples;
}

const Kind kKinds[] = {
    {"Os2Of1Bit", 12, 1},
    {"Os2Of4Bits", 12, 4},
    {"Os2Of8Bits", 12, 8},
    {"Os2Of24Bits", 12, 24},
    {"ShortOs2Version2", 16, 24, 0, {}, false, std::nullopt},
    {"LongOs2Version2", 64, 8, 0, {}, false, std::nullopt},
    {"PaletteOf1Bit", 40, 1},
    {"PaletteOf2Bits", 40, 2, 0, {}, false, std::nullopt},
    {"PaletteOf4Bits", 40, 4},
    {"PaletteOf8Bits", 40, 8},
    {"PaletteOf8BitsTopDown", 40, 8, 0, {}, true},
    {"FiveBits", 40, 16, 0, {}, false, kStep},
    {"FiveBitsTopDown", 40, 16, 0, {}, true, kStep},
    {"Bytes", 40, 24},
    {"BytesTopDown", 40, 24, 0, {}, true},
    {"BytesAndOneUnused", 40, 32, 0, {}, false, std::nullopt},
    {"BytesAndOneUnusedInVersion5", 124, 32},
    {"Masks565", 40, 16, 3, {0xF800, 0x07E0, 0x001F, 0}, false, kStep},
    {"MasksInTheHeader", 52, 16, 3, {0xF800, 0x07E0, 0x001F, 0}, false, std::nullopt},
    {"MasksOf4444", 56, 16, 3, {0x0F00, 0x00F0, 0x000F, 0xF000}, false, std::nullopt},
    {"MasksOf1555", 108, 16, 3, {0x7C00, 0x03E0, 0x001F, 0x8000}, false, std::nullopt},
    {"MasksOfBytes", 40, 32, 3, {0x00FF0000, 0x0000FF00, 0x000000FF, 0}},
    {"MasksOfBytesInOtherOrder", 40, 32, 3, {0x000000FF, 0xFF000000, 0x0000FF00, 0}},
    {"MasksWithAlphaBehindTheHeader",
     40,
     32,
     6,
     {0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000},
     false,
     std::nullopt},
    {"MasksWithAlphaInVersion4", 108, 32, 3, {0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000}},
    {"MasksWithAlphaInVersion5", 124, 32, 3, {0xFF000000, 0x00FF0000, 0x0000FF00, 0x000000FF}},
    {"MasksOfOddWidths", 108, 32, 3, {0x7F000000, 0x00E00000, 0x00001FE0, 0x00000003}, false, std::nullopt},
    {"MasksOfTenBits", 108, 32, 3, {0x3FF00000, 0x000FFC00, 0x000003FF, 0}, false, kHalfStep},
    {"MaskOfNoBlue", 40, 32, 3, {0x00FF0000, 0x0000FF00, 0, 0}},
};

std::vector<Kind> kindsOfImageMagick() {
  std::vector<Kind> kinds;
  for (const Kind& kind : kKinds)
    if (kind.peer) kinds.push_back(kind);
  return kinds;
}

class BmpReading : public testing::TestWithParam<Kind> {};

TEST_P(BmpReading, GivesThePixelsThatTheFormatDescribes) {
  for (const auto& [width, height] : {std::pair{1U, 1U}, {1U, 9U}, {kWidth, kHeight}}) {
    const BmpParts parts = partsOf(GetParam(), width, height);
    const Pixels pixels = decoded(bmpFile(parts));
    EXPECT_EQ(pixels.layout.width, width);
    EXPECT_EQ(pixels.layout.height, height);
    EXPECT_EQ(asRgba16(pixels), expectedOf(parts, height)) << width << "x" << height;
  }
}

class BmpReadingBesideAnother : public testing::TestWithParam<Kind> {};

TEST_P(BmpReadingBesideAnother, GivesThePixelsThatImageMagickReads) {
  OSTRA_NEEDS_PROGRAM("convert");
  const Kind kind = GetParam();
  const TemporaryFolder folder;
  writeFile(folder.path("a.bmp"), bmpFile(partsOf(kind, kWidth, kHeight)));
  const auto ours = asRgba16(decoded(readFile(folder.path("a.bmp"))));
  const auto theirs = rgba16ByImageMagick(folder.path("a.bmp"));
  ASSERT_EQ(ours.size(), theirs.size());
  for (std::size_t i = 0; i < ours.size(); ++i)
    ASSERT_LE(std::abs(int{ours[i]} - int{theirs[i]}), *kind.peer) << "sample " << i;
}

INSTANTIATE_TEST_SUITE_P(EveryKindThatItReads, BmpReadingBesideAnother,
                         testing::ValuesIn(kindsOfImageMagick()),
                         [](const testing::TestParamInfo<Kind>& kind) {
                           return std::string(kind.param.name);
                         });
INSTANTIATE_TEST_SUITE_P(EveryKind, BmpReading, testing::ValuesIn(kKinds),
                         [](const testing::TestParamInfo<Kind>& kind) {
                           return std::string(kind.param.name);
                         });

// The index of each pixel of a picture in run-length codes, top row first; the palette's blue is its entry's
// number.
std::optional<Bytes> indicesOf(unsigned bits, std::uint32_t width, std::int32_t height, const Bytes& code) {
  BmpParts parts;
  parts.width = width;
  parts.height = height;
  parts.bits = bits;
  parts.compression = bits == 8 ? 1 : 2;
  for (unsigned i = 0; i < (1U << bits); ++i) appendLittle(parts.palette, i | (i == 0 ? 0x0100 : 0), 4);
  parts.data = code;
  const auto answer = decodeBytes(bmpFile(parts));
  const auto* pixels = std::get_if<Pixels>(&answer);
  if (pixels == nullptr) return std::nullopt;
  Bytes indices;
  for (std::size_t i = 2; i < pixels->bytes.view.size(); i += 4) indices.push_back(pixels->bytes.view[i]);
  return indices;
}

TEST(BmpRunLengths, OfEightBitsMakeRunsPixelsAndGaps) {
  // The bottom row: a run, three pixels of their own. The next one: a pixel, then on by two columns and two
  // rows.
  const Bytes code = {2, 9, 0, 3, 4, 5, 6, 0, 0, 0, 1, 7, 0, 2, 2, 2, 2, 8, 0, 1};
  EXPECT_EQ(indicesOf(8, 5, 4, code), (Bytes{0, 0, 0, 8, 8, 0, 0, 0, 0, 0, 7, 0, 0, 0, 0, 9, 9, 4, 5, 6}));
}

TEST(BmpRunLengths, OfFourBitsTakeHalvesInTurn) {
  const Bytes code = {5, 0x12, 0, 0, 0, 3, 0x34, 0x50, 2, 0x67, 0, 1};
  EXPECT_EQ(indicesOf(4, 5, 2, code), (Bytes{3, 4, 5, 6, 7, 1, 2, 1, 2, 1}));
}

TEST(BmpRunLengths, OfTwentyFourBitsRepeatColours) {
  BmpParts parts;
  parts.headerSize = 64;
  parts.width = 3;
  parts.height = 2;
  parts.compression = 4;
  parts.data = {2, 1, 2, 3, 1, 4, 5, 6, 0, 0, 0, 3, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0, 0, 1};
  const Pixels pixels = decoded(bmpFile(parts));
  EXPECT_EQ(
      Bytes(pixels.bytes.view.begin(), pixels.bytes.view.end()),
      (Bytes{9, 8, 7, 255, 12, 11, 10, 255, 15, 14, 13, 255, 3, 2, 1, 255, 3, 2, 1, 255, 6, 5, 4, 255}));
}

TEST(BmpRunLengths, MayEndEarlyWithTheirMarkAlone) {
  EXPECT_EQ(indicesOf(8, 2, 2, {2, 9, 0, 1}), (Bytes{0, 0, 9, 9}));
  EXPECT_EQ(indicesOf(8, 2, 2, {2, 9, 0, 0}), std::nullopt);
  EXPECT_EQ(indicesOf(8, 2, 2, {2, 9}), std::nullopt);
  EXPECT_EQ(indicesOf(8, 2, 2, {}), std::nullopt);
  // Behind the last pixel there is nothing that a mark could say.
  EXPECT_EQ(indicesOf(8, 2, 2, {2, 9, 0, 0, 2, 8}), (Bytes{8, 8, 9, 9}));
  EXPECT_EQ(indicesOf(8, 2, 2, {2, 9, 0, 0, 1, 8}), std::nullopt);
}

TEST(BmpRunLengths, ThatLeaveThePictureAreRefused) {
  EXPECT_EQ(indicesOf(8, 2, 2, {5, 9, 0, 1}), std::nullopt) << "a run";
  EXPECT_EQ(indicesOf(4, 2, 2, {9, 9, 0, 1}), std::nullopt) << "a run of half bytes";
  EXPECT_EQ(indicesOf(8, 2, 2, {0, 5, 1, 2, 3, 4, 5, 0, 0, 1}), std::nullopt) << "pixels";
  EXPECT_EQ(indicesOf(8, 2, 2, {0, 2, 5, 0, 0, 1}), std::nullopt) << "columns";
  EXPECT_EQ(indicesOf(8, 2, 2, {0, 2, 0, 2, 0, 1}), std::nullopt) << "rows";
}

TEST(BmpRunLengths, MayCodeThePaddingOfARow) {
  EXPECT_EQ(indicesOf(8, 2, 2, {4, 9, 0, 0, 0, 4, 1, 2, 3, 4, 0, 1}), (Bytes{1, 2, 9, 9}));
  EXPECT_EQ(indicesOf(4, 2, 1, {8, 0x12, 0, 1}), (Bytes{1, 2}));
}

TEST(BmpRunLengths, OfAnotherProgramAreReadAsItReadsThem) {
  OSTRA_NEEDS_PROGRAM("convert");
  const TemporaryFolder folder;
  writeFile(folder.path("a.bmp"),
            madeByImageMagick({"-size", "47x33", "-seed", "3", "plasma:tomato-steelblue", "-colors", "9",
                               "-type", "palette", "-compress", "RLE", "-define", "bmp:format=bmp3"},
                              "bmp"));
  ASSERT_EQ(readFile(folder.path("a.bmp"))[30], 1) << "not in run-length codes";
  EXPECT_EQ(asRgba16(decoded(readFile(folder.path("a.bmp")))), rgba16ByImageMagick(folder.path("a.bmp")));
}

BmpParts grayParts() {
  BmpParts parts;
  parts.width = 2;
  parts.height = 1;
  parts.bits = 8;
  parts.coloursUsed = 2;
  parts.palette = {9, 9, 9, 0, 200, 200, 200, 0};
  parts.data = {1, 0, 0, 0};
  return parts;
}

TEST(BmpPalette, OfGraysIsAGrayPicture) {
  const Pixels pixels = decoded(bmpFile(grayParts()));
  EXPECT_EQ(pixels.layout.model, CGColorSpaceModel::monochrome);
  EXPECT_EQ(Bytes(pixels.bytes.view.begin(), pixels.bytes.view.end()), (Bytes{200, 9}));
  EXPECT_EQ(propertiesOf(bmpFile(grayParts())).tree.at("ColorModel"), Value("Gray"));
}

TEST(BmpPalette, IsNotReadBeyond) {
  BmpParts parts = grayParts();
  parts.data[1] = 2;
  EXPECT_EQ(faultOf(decodeBytes(bmpFile(parts))), Fault{FaultKind::damaged});
}

TEST(BmpProperties, TellSizeDepthModelAndDensity) {
  BmpParts parts = partsOf(kKinds[9], kWidth, kHeight);
  parts.density = 11811;
  const Dictionary tree = propertiesOf(bmpFile(parts)).tree;
  EXPECT_EQ(tree.at("PixelWidth"), Value(47));
  EXPECT_EQ(tree.at("PixelHeight"), Value(33));
  EXPECT_EQ(tree.at("Depth"), Value(8));
  EXPECT_EQ(tree.at("ColorModel"), Value("RGB"));
  EXPECT_EQ(tree.at("IsIndexed"), Value(true));
  EXPECT_EQ(tree.at("DPIWidth"), Value(300.0));
  EXPECT_EQ(tree.at("DPIHeight"), Value(300.0));
  EXPECT_EQ(tree.count("HasAlpha"), 0u);
  EXPECT_EQ(tree.count("ProfileName"), 0u);
}

// Programs that write such a header without knowing alpha leave it 0; a conversion would make all of it
// black.
TEST(BmpAlpha, OfZeroEverywhereIsNone) {
  BmpParts parts;
  parts.headerSize = 108;
  parts.width = 2;
  parts.height = 1;
  parts.bits = 32;
  parts.compression = 3;
  parts.masks = {0xFF0000, 0xFF00, 0xFF, 0xFF000000};
  parts.data = {1, 2, 3, 0, 4, 5, 6, 0};
  EXPECT_EQ(asRgba16(decoded(bmpFile(parts))),
            (std::vector<std::uint16_t>{3 * 257, 2 * 257, 257, 65535, 6 * 257, 5 * 257, 4 * 257, 65535}));
  parts.data[7] = 1;
  EXPECT_EQ(asRgba16(decoded(bmpFile(parts)))[3], 0);
  parts.data = Bytes(8, 0);
  EXPECT_EQ(asRgba16(decoded(bmpFile(parts)))[3], 0) << "nothing is lost of no colour";
}

BmpParts colouredParts(std::uint32_t space) {
  BmpParts parts;
  parts.headerSize = 124;
  parts.width = 1;
  parts.height = 1;
  parts.space = space;
  parts.data = {1, 2, 3, 0};
  return parts;
}
constexpr std::uint32_t kSRGB = 0x73524742, kWindows = 0x57696E20, kLinked = 0x4C494E4B,
                        kEmbedded = 0x4D424544;

TEST(BmpColour, IsTheSpaceThatTheHeaderNames) {
  const auto profileOf = [](const BmpParts& parts) { return decoded(bmpFile(parts)).profile; };
  EXPECT_EQ(std::get<NamedSpace>(profileOf(colouredParts(kSRGB))).name, kCGColorSpaceSRGB);
  EXPECT_TRUE(std::holds_alternative<Untagged>(profileOf(colouredParts(kWindows))));
  EXPECT_TRUE(std::holds_alternative<Untagged>(profileOf(colouredParts(kLinked))));
  EXPECT_TRUE(std::holds_alternative<Untagged>(profileOf(colouredParts(0)))) << "calibrated by zeros";
}

TEST(BmpColour, OfAnEmbeddedProfileIsThatProfile) {
  const CGColorSpaceRef space = CGColorSpace::createWithName(kCGColorSpaceDisplayP3);
  BmpParts parts = colouredParts(kEmbedded);
  parts.profile = Bytes(space->iccData().begin(), space->iccData().end());
  const Bytes file = bmpFile(parts);
  EXPECT_EQ(std::get<IccProfile>(decoded(file).profile).bytes, parts.profile);
  EXPECT_EQ(propertiesOf(file).tree.at("ProfileName"), Value("Display P3"));
  // One that is cut off says nothing; the pixels are all there.
  EXPECT_TRUE(std::holds_alternative<Untagged>(decoded(ByteView(file).first(file.size() - 1)).profile));
  Limits limits;
  limits.profileBytes = parts.profile.size() - 1;
  EXPECT_EQ(faultOf(decodeBytes(file, limits)), (Fault{FaultKind::limit, LimitName::profileBytes}));
}

std::uint32_t fixed(double value) { return static_cast<std::uint32_t>(std::lround(value * (1 << 30))); }

TEST(BmpColour, OfPrimariesAndGammaIsCalibrated) {
  BmpParts parts = colouredParts(0);
  // Adobe RGB's primaries as XYZ whose sum is its white, D65.
  parts.endpoints = {fixed(0.57667), fixed(0.29734), fixed(0.02703), fixed(0.18556), fixed(0.62736),
                     fixed(0.07069), fixed(0.18823), fixed(0.07529), fixed(0.99134)};
  parts.gammas = {0x23333, 0x23333, 0x23333};
  const auto space = std::get<Calibrated>(decoded(bmpFile(parts)).profile);
  EXPECT_NEAR(space.gamma, 2.2, 1e-4);
  EXPECT_NEAR(space.white[0], 0.3127, 1e-3);
  EXPECT_NEAR(space.white[1], 0.3290, 1e-3);
  EXPECT_NEAR((*space.primaries)[0], 0.64, 1e-3);
  EXPECT_NEAR((*space.primaries)[2], 0.21, 1e-3);
  EXPECT_NEAR((*space.primaries)[5], 0.06, 1e-3);
  parts.gammas[1] = 0x20000;
  EXPECT_TRUE(std::holds_alternative<Untagged>(decoded(bmpFile(parts)).profile)) << "three curves";
}

TEST(BmpColour, OfChromaticitiesHasTheWhiteOfDaylight) {
  BmpParts parts = colouredParts(0);
  parts.endpoints = {fixed(0.64), fixed(0.33), fixed(0.03), fixed(0.30), fixed(0.60),
                     fixed(0.10), fixed(0.15), fixed(0.06), fixed(0.79)};
  parts.gammas = {0x23333, 0x23333, 0x23333};
  const auto space = std::get<Calibrated>(decoded(bmpFile(parts)).profile);
  EXPECT_EQ(space.white, (std::array<double, 2>{0.3127, 0.3290}));
  EXPECT_NEAR((*space.primaries)[3], 0.60, 1e-6);
}

}  // namespace
}  // namespace ostra::test
