#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/gif_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

struct Kind {
  unsigned bits;
  bool interlaced, localPalette, smaller, transparent;
};

std::string nameOf(const testing::TestParamInfo<Kind>& info) {
  const Kind& kind = info.param;
  return "Bits" + std::to_string(kind.bits) + (kind.interlaced ? "Interlaced" : "") +
         (kind.localPalette ? "Local" : "") + (kind.smaller ? "Smaller" : "") +
         (kind.transparent ? "Transparent" : "");
}

std::vector<Kind> allKinds() {
  std::vector<Kind> kinds;
  for (unsigned bits = 1; bits <= 8; ++bits) {
    // Everything together with the sizes that fill bytes, the others plain and with everything.
    const unsigned step = bits == 1 || bits == 2 || bits == 4 || bits == 8 ? 1 : 15;
    for (unsigned flags = 0; flags < 16; flags += step)
      kinds.push_back({bits, (flags & 1) != 0, (flags & 2) != 0, (flags & 4) != 0, (flags & 8) != 0});
  }
  return kinds;
}

GifParts partsOf(const Kind& kind) {
  GifParts parts;
  parts.bits = kind.bits;
  parts.interlaced = kind.interlaced;
  parts.localPalette = parts.wrongGlobalPalette = kind.localPalette;
  parts.seed = kind.bits;
  if (kind.transparent) parts.transparent = std::uint8_t{1};
  if (kind.smaller) {
    parts.screenWidth = 64;
    parts.screenHeight = 51;
    parts.left = 9;
    parts.top = 17;
  }
  return parts;
}

class GifReading : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override { OSTRA_NEEDS_PROGRAM("convert"); }
};

TEST_P(GifReading, GivesThePixelsThatWereStoredAndThatImageMagickReads) {
  const GifParts parts = partsOf(GetParam());
  const Bytes file = gifOf(parts);
  const Pixels pixels = decoded(file);
  EXPECT_EQ(pixels.layout.width, parts.screenWidth);
  EXPECT_EQ(pixels.layout.height, parts.screenHeight);
  const bool alpha = GetParam().smaller || GetParam().transparent;
  EXPECT_EQ(pixels.layout.bitmapInfo,
            static_cast<CGBitmapInfo>(alpha ? CGImageAlphaInfo::last : CGImageAlphaInfo::noneSkipLast));
  const auto samples = asRgba16(pixels);
  EXPECT_EQ(samples, gifCanvas(parts));
  EXPECT_EQ(samples, coalescedByImageMagick(file));
}

TEST_P(GifReading, TellsSizeDepthModelAndFlags) {
  const GifParts parts = partsOf(GetParam());
  const Dictionary tree = propertiesOf(gifOf(parts)).tree;
  EXPECT_EQ(tree.at("PixelWidth"), Value(std::int64_t{parts.screenWidth}));
  EXPECT_EQ(tree.at("PixelHeight"), Value(std::int64_t{parts.screenHeight}));
  EXPECT_EQ(tree.at("Depth"), Value(8));
  EXPECT_EQ(tree.at("ColorModel"), Value("RGB"));
  EXPECT_EQ(tree.at("IsIndexed"), Value(true));
  EXPECT_EQ(tree.count("HasAlpha"), GetParam().smaller || GetParam().transparent ? 1u : 0u);
}

INSTANTIATE_TEST_SUITE_P(EveryKind, GifReading, testing::ValuesIn(allKinds()), nameOf);

// Other programs' compression, and a palette of every size.
class GifOfPeers : public testing::TestWithParam<int> {};

TEST_P(GifOfPeers, IsReadAsImageMagickAndTheLibrarysOwnToolDo) {
  OSTRA_NEEDS_PROGRAM("convert");
  OSTRA_NEEDS_PROGRAM("gif2rgb");
  for (const char* interlace : {"None", "GIF"}) {
    const Bytes file =
        madeByImageMagick({"-size", "97x61", "-seed", std::to_string(GetParam()), "plasma:tomato-steelblue",
                           "-colors", std::to_string(GetParam()), "-interlace", interlace},
                          "gif");
    const TemporaryFolder folder;
    writeFile(folder.path("a.gif"), file);
    const Pixels pixels = decoded(file);
    EXPECT_EQ(asRgba16(pixels), rgba16ByImageMagick(folder.path("a.gif")));
    run({"gif2rgb", "-1", "-o", folder.path("rgb"), folder.path("a.gif")});
    const Bytes theirs = readFile(folder.path("rgb"));
    ASSERT_EQ(theirs.size(), std::size_t{97} * 61 * 3);
    for (std::size_t i = 0; i < theirs.size(); ++i)
      ASSERT_EQ(pixels.bytes.view[i / 3 * 4 + i % 3], theirs[i]) << "sample " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(PaletteSizes, GifOfPeers, testing::Values(2, 3, 4, 5, 16, 17, 100, 128, 255, 256));

TEST(GifAnimation, IsCountedAndItsFirstFrameRead) {
  const auto countOf = [](const Bytes& file) {
    return std::get<std::unique_ptr<Reader>>(openBytes(file))->opened().count;
  };
  GifParts parts;
  const auto still = asRgba16(decoded(gifOf(parts)));
  for (const unsigned frames : {1u, 2u, 7u}) {
    parts.frames = frames;
    EXPECT_EQ(countOf(gifOf(parts)), frames);
    EXPECT_EQ(asRgba16(decoded(gifOf(parts))), still);
  }
  Limits few;
  few.frames = 3;
  EXPECT_EQ(std::get<std::unique_ptr<Reader>>(openBytes(gifOf(parts), few))->opened().count, 3u);
  EXPECT_FALSE(faultOf(decodeBytes(gifOf(parts), few))) << "counting less refuses nothing";
}

TEST(GifAnimation, TellsItsTimes) {
  GifParts parts;
  parts.transparent = std::uint8_t{3};
  parts.frames = 2;
  parts.extensions = gifApplication("NETSCAPE2.0", Bytes{1, 3, 0});
  const Dictionary tree = propertiesOf(gifOf(parts)).tree;
  const Dictionary& group = *tree.at("{GIF}").get<Dictionary>();
  EXPECT_EQ(group.at("LoopCount"), Value(4)) << "shown once, then three times again";
  EXPECT_EQ(group.at("UnclampedDelayTime"), Value(0.05));
  EXPECT_EQ(group.at("DelayTime"), Value(0.05));
  EXPECT_EQ(group.at("HasGlobalColorMap"), Value(true));
  EXPECT_EQ(group.at("CanvasPixelWidth"), Value(47));
  EXPECT_EQ(group.at("CanvasPixelHeight"), Value(33));
  EXPECT_EQ(group.at("FrameInfo").get<Array>()->size(), 2u);
}

// No stored pixel is cut away, whatever the screen is said to be.
TEST(GifScreenSize, GrowsToHoldTheFrame) {
  GifParts parts;
  const auto frame = gifCanvas(parts);
  parts.screenWidth = parts.screenHeight = 0;
  EXPECT_EQ(asRgba16(decoded(gifOf(parts))), frame);
  parts.screenWidth = 20;
  parts.screenHeight = 12;
  EXPECT_EQ(asRgba16(decoded(gifOf(parts))), frame);
  parts.left = 5;
  parts.top = 3;
  GifParts larger = parts;
  larger.screenWidth = kWidth + 5;
  larger.screenHeight = kHeight + 3;
  EXPECT_EQ(asRgba16(decoded(gifOf(parts))), gifCanvas(larger));
}

TEST(GifTransparency, OfAnEntryOutsideThePaletteIsRead) {
  GifParts parts;
  parts.bits = 4;
  const Bytes entries(std::size_t{kWidth} * kHeight, 200);
  parts.data = gifData(entries, 8);
  EXPECT_EQ(faultOf(decodeBytes(gifOf(parts))), Fault{FaultKind::damaged}) << "a colour that nobody knows";
  parts.transparent = std::uint8_t{200};
  EXPECT_EQ(asRgba16(decoded(gifOf(parts))), std::vector<std::uint16_t>(entries.size() * 4, 0));
}

// What stands before a text that is drawn by nobody does not speak of the picture.
TEST(GifTransparency, OfATextIsNotThePictures) {
  GifParts parts;
  parts.extensions = joined({gifExtension(0xF9, Bytes{1, 0, 0, 1}), gifExtension(0x01, Bytes(12, 0))});
  EXPECT_EQ(asRgba16(decoded(gifOf(parts))), gifCanvas(parts));
}

TEST(GifPixelShape, IsCarried) {
  GifParts parts;
  EXPECT_EQ(propertiesOf(gifOf(parts)).carrier, nullptr);
  parts.aspect = 113;  // twice as wide as high
  const auto aspect = propertiesOf(gifOf(parts)).carrier->pixelAspect;
  ASSERT_TRUE(aspect);
  EXPECT_EQ(aspect->y, 2 * aspect->x);
}

}  // namespace
}  // namespace ostra::test
