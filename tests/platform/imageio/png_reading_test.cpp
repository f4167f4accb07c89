#include <gtest/gtest.h>

#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

constexpr int kGray = 0, kRgb = 2, kPalette = 3, kGrayAlpha = 4, kRgba = 6;

struct Kind {
  int colourType;
  int bits;
  bool interlaced;
};

std::string nameOf(const testing::TestParamInfo<Kind>& info) {
  const char* const names[] = {"Gray", "", "Rgb", "Palette", "GrayAlpha", "", "Rgba"};
  return names[info.param.colourType] + std::to_string(info.param.bits) +
         (info.param.interlaced ? "Interlaced" : "");
}

std::vector<Kind> allKinds() {
  std::vector<Kind> kinds;
  for (const bool interlaced : {false, true}) {
    for (const int bits : {1, 2, 4, 8, 16}) kinds.push_back({kGray, bits, interlaced});
    for (const int bits : {1, 2, 4, 8}) kinds.push_back({kPalette, bits, interlaced});
    for (const int type : {kRgb, kGrayAlpha, kRgba}) {
      for (const int bits : {8, 16}) kinds.push_back({type, bits, interlaced});
    }
  }
  return kinds;
}

Bytes pngOf(const Kind& kind);

// A gray file whose header says that its levels are entries of a palette of random colours.
Bytes palettePngOf(const Kind& kind) {
  const Bytes gray = pngOf({kGray, kind.bits, kind.interlaced});
  Bytes header(gray.begin() + 16, gray.begin() + 29);
  header[9] = kPalette;
  const Bytes palette = pngChunk("PLTE", randomBytes((std::size_t{3} << kind.bits), 3));
  const auto pixels = static_cast<std::ptrdiff_t>(positionOf("IDAT", gray) - 4);
  return joined({Bytes(gray.begin(), gray.begin() + 8), pngChunk("IHDR", header), palette,
                 Bytes(gray.begin() + pixels, gray.end())});
}

// Seeded noise in the file type asked for; ImageMagick reduces it to the depth.
Bytes pngOf(const Kind& kind) {
  if (kind.colourType == kPalette) return palettePngOf(kind);
  const TemporaryFolder folder;
  const bool gray = kind.colourType == kGray || kind.colourType == kGrayAlpha;
  writeFile(folder.path("raw"),
            gray ? randomBytes(kWidth * kHeight * 4) : randomBytes(kWidth * kHeight * 8, 2));
  std::vector<std::string> words = {"-size", "47x33", "-depth", "16",
                                    (gray ? "graya:" : "rgba:") + folder.path("raw")};
  if (kind.colourType != kGrayAlpha && kind.colourType != kRgba) words.insert(words.end(), {"-alpha", "off"});
  if (kind.interlaced) words.insert(words.end(), {"-interlace", "PNG"});
  words.insert(words.end(), {"-define", "png:color-type=" + std::to_string(kind.colourType), "-define",
                             "png:bit-depth=" + std::to_string(kind.bits)});
  return madeByImageMagick(words, "png");
}

class PngReading : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override { OSTRA_NEEDS_PROGRAM("convert"); }
};

TEST_P(PngReading, GivesThePixelsThatImageMagickReads) {
  const Bytes file = pngOf(GetParam());
  ASSERT_EQ(file[24], GetParam().bits) << "not the file that was asked for";
  ASSERT_EQ(file[25], GetParam().colourType);
  ASSERT_EQ(file[28], GetParam().interlaced ? 1 : 0);
  const TemporaryFolder folder;
  writeFile(folder.path("a.png"), file);
  const Pixels pixels = decoded(file);
  EXPECT_EQ(pixels.layout.width, kWidth);
  EXPECT_EQ(pixels.layout.height, kHeight);
  EXPECT_EQ(pixels.layout.bitsPerComponent, GetParam().bits == 16 ? 16 : 8);
  EXPECT_EQ(asRgba16(pixels), rgba16ByImageMagick(folder.path("a.png")));
}

TEST_P(PngReading, TellsDepthModelAndFlags) {
  const Kind kind = GetParam();
  const Dictionary tree = propertiesOf(pngOf(kind)).tree;
  const bool gray = kind.colourType == kGray || kind.colourType == kGrayAlpha;
  EXPECT_EQ(tree.at("PixelWidth"), Value(47));
  EXPECT_EQ(tree.at("PixelHeight"), Value(33));
  EXPECT_EQ(tree.at("Depth"), Value(kind.colourType == kPalette ? 8 : kind.bits));
  EXPECT_EQ(tree.at("ColorModel"), Value(gray ? "Gray" : "RGB"));
  EXPECT_EQ(tree.count("HasAlpha"), kind.colourType >= kGrayAlpha ? 1u : 0u);
  EXPECT_EQ(tree.count("IsIndexed"), kind.colourType == kPalette ? 1u : 0u);
  EXPECT_EQ(tree.at("{PNG}").get<Dictionary>()->at("InterlaceType"), Value(kind.interlaced ? 1 : 0));
}

INSTANTIATE_TEST_SUITE_P(EveryKind, PngReading, testing::ValuesIn(allKinds()), nameOf);

class PngTransparency : public testing::Test {
 protected:
  void SetUp() override { OSTRA_NEEDS_PROGRAM("convert"); }

  // The file with a transparency chunk before its pixels, as ImageMagick and we read it.
  static void expectSamePixels(const Bytes& still, const Bytes& transparency) {
    const std::size_t pixels = positionOf("IDAT", still) - 4;
    Bytes file = still;
    const Bytes chunk = pngChunk("tRNS", transparency);
    file.insert(file.begin() + static_cast<std::ptrdiff_t>(pixels), chunk.begin(), chunk.end());
    const TemporaryFolder folder;
    writeFile(folder.path("a.png"), file);
    const Pixels ours = decoded(file);
    EXPECT_EQ(ours.layout.bitmapInfo & kCGBitmapAlphaInfoMask,
              static_cast<CGBitmapInfo>(CGImageAlphaInfo::last));
    const auto samples = asRgba16(ours);
    const auto expected = rgba16ByImageMagick(folder.path("a.png"));
    ASSERT_EQ(samples.size(), expected.size());
    std::size_t transparent = 0;
    for (std::size_t i = 0; i < samples.size(); i += 4) {
      ASSERT_EQ(samples[i + 3], expected[i + 3]) << "alpha of pixel " << i / 4;
      if (samples[i + 3] == 0) ++transparent;
      // What a wholly transparent pixel would look like is nobody's business.
      for (std::size_t c = 0; c < 3 && samples[i + 3] != 0; ++c)
        ASSERT_EQ(samples[i + c], expected[i + c]) << i / 4;
    }
    EXPECT_GT(transparent, 0u);
  }
};

TEST_F(PngTransparency, OfAPaletteEntryBecomesAlpha) {
  expectSamePixels(pngOf({kPalette, 4, false}), {0, 128, 255, 7});
}

TEST_F(PngTransparency, OfAGrayLevelBecomesAlpha) {
  expectSamePixels(pngOf({kGray, 2, true}), {0, 1});
  expectSamePixels(pngOf({kGray, 8, false}), {0, randomBytes(4)[1]});
}

TEST_F(PngTransparency, OfAColourBecomesAlpha) {
  const Bytes file = pngOf({kRgb, 16, false});
  const auto first = asRgba16(decoded(file));
  Bytes colour;
  for (int c = 0; c < 3; ++c)
    colour.insert(colour.end(),
                  {static_cast<std::uint8_t>(first[c] >> 8), static_cast<std::uint8_t>(first[c])});
  expectSamePixels(file, colour);
}

TEST_F(PngTransparency, IsReadAtEveryDepth) {
  for (const bool interlaced : {false, true}) {
    for (const int bits : {1, 2, 4, 8}) expectSamePixels(pngOf({kPalette, bits, interlaced}), {0, 128});
    for (const auto& [type, bits] :
         {std::pair{kGray, 1}, {kGray, 2}, {kGray, 4}, {kGray, 8}, {kGray, 16}, {kRgb, 8}, {kRgb, 16}}) {
      const Bytes file = pngOf({type, bits, interlaced});
      const auto first = asRgba16(decoded(file));
      Bytes level;  // of the first pixel, as many bits as the file stores
      for (int c = 0; c < (type == kGray ? 1 : 3); ++c) {
        const int stored = first[static_cast<std::size_t>(c)] >> (16 - bits);
        level.insert(level.end(),
                     {static_cast<std::uint8_t>(stored >> 8), static_cast<std::uint8_t>(stored)});
      }
      expectSamePixels(file, level);
    }
  }
}

TEST_F(PngTransparency, OfAPictureWithAnAlphaChannelMeansNothing) {
  const Bytes file = pngOf({kRgba, 8, false});
  EXPECT_EQ(asRgba16(decoded(withPngChunk(file, pngChunk("tRNS", Bytes(6, 0))))), asRgba16(decoded(file)));
}

// Samples are stored in their whole range whatever the chunk says of their source.
TEST(PngSignificantBits, ChangeNoSample) {
  OSTRA_NEEDS_PROGRAM("convert");
  const Bytes deep = pngOf({kRgb, 16, false}), gray = pngOf({kGray, 8, false});
  EXPECT_EQ(asRgba16(decoded(withPngChunk(deep, pngChunk("sBIT", Bytes{5, 6, 5})))), asRgba16(decoded(deep)));
  EXPECT_EQ(asRgba16(decoded(withPngChunk(gray, pngChunk("sBIT", Bytes{3})))), asRgba16(decoded(gray)));
}

// Claimed or not: a frame beyond the count is one that a rewrite would lose.
TEST(PngAnimation, CountsTheFramesThatLieInTheFile) {
  OSTRA_NEEDS_PROGRAM("convert");
  const Bytes still = pngOf({kRgb, 8, false});
  const auto countOf = [](const Bytes& file) {
    return std::get<std::unique_ptr<Reader>>(openBytes(file))->opened().count;
  };
  const Bytes one = pngChunk("acTL", Bytes{0, 0, 0, 1, 0, 0, 0, 0}), frame = pngChunk("fcTL", Bytes(26, 0));
  EXPECT_EQ(countOf(withPngChunk(still, joined({one, frame}))), 1u);
  EXPECT_EQ(countOf(withPngChunk(still, joined({one, frame, frame, frame}))), 3u);
  EXPECT_EQ(countOf(withPngChunk(still, joined({frame, frame}))), 1u) << "no animation without its control";
  Bytes wrong = one;
  wrong[11] = 9;
  EXPECT_EQ(countOf(withPngChunk(still, wrong)), 1u) << "a wrong checksum";
}

TEST(PngAnimation, CountsTheFramesThatItsControlClaims) {
  OSTRA_NEEDS_PROGRAM("convert");
  const Bytes still = pngOf({kRgb, 8, false});
  const auto countOf = [](const Bytes& file) {
    return std::get<std::unique_ptr<Reader>>(openBytes(file))->opened().count;
  };
  EXPECT_EQ(countOf(still), 1u);
  EXPECT_EQ(countOf(withPngChunk(still, pngChunk("acTL", Bytes{0, 0, 0, 5, 0, 0, 0, 0}))), 5u);
  EXPECT_EQ(countOf(withPngChunk(still, pngChunk("acTL", Bytes{0, 0, 0, 1, 0, 0, 0, 0}))), 1u);
  // The default image stays readable.
  const Bytes animated = withPngChunk(still, pngChunk("acTL", Bytes{0, 0, 0, 5, 0, 0, 0, 0}));
  EXPECT_EQ(asRgba16(decoded(animated)), asRgba16(decoded(still)));
}

TEST(PngDensity, IsRoundedToTheWholeNumberThatWasMeant) {
  OSTRA_NEEDS_PROGRAM("convert");
  const Bytes still =
      madeByImageMagick({"-size", "3x2", "xc:red", "-strip", "-define", "png:exclude-chunks=pHYs"}, "png");
  const auto density = [&](std::uint32_t perMetre) {
    const Bytes number = {static_cast<std::uint8_t>(perMetre >> 24),
                          static_cast<std::uint8_t>(perMetre >> 16), static_cast<std::uint8_t>(perMetre >> 8),
                          static_cast<std::uint8_t>(perMetre)};
    return propertiesOf(withPngChunk(still, pngChunk("pHYs", joined({number, number, {1}}))))
        .tree.at("DPIWidth");
  };
  EXPECT_EQ(propertiesOf(still).tree.count("DPIWidth"), 0u);
  EXPECT_EQ(density(5669), Value(144.0));
  EXPECT_EQ(density(2835), Value(72.0));
  EXPECT_EQ(density(11811), Value(300.0));
  EXPECT_NEAR(*density(1000).number(), 25.4, 1e-9);
}

}  // namespace
}  // namespace ostra::test
