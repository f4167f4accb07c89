#include <gtest/gtest.h>

#include "platform/imageio/codec.h"
#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/bmp_files.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

struct Entry {
  unsigned width, height;
  unsigned bits;
  Bytes contents;
};

Bytes fileOf(const std::vector<Entry>& entries, unsigned kind = 1) {
  Bytes file;
  appendLittle(file, 0, 2);
  appendLittle(file, kind, 2);
  appendLittle(file, entries.size(), 2);
  std::size_t at = 6 + 16 * entries.size();
  for (const Entry& entry : entries) {
    appendLittle(file, entry.width & 255, 1);
    appendLittle(file, entry.height & 255, 1);
    appendLittle(file, 0, 2);
    appendLittle(file, 1, 2);
    appendLittle(file, entry.bits, 2);
    appendLittle(file, entry.contents.size(), 4);
    appendLittle(file, at, 4);
    at += entry.contents.size();
  }
  for (const Entry& entry : entries) file.insert(file.end(), entry.contents.begin(), entry.contents.end());
  return file;
}

// Random pixels over a random mask; without `alpha` the fourth byte of 32 bits is 0.
Entry bitmapEntry(unsigned width, unsigned height, unsigned bits, bool alpha = false) {
  BmpParts parts;
  parts.width = width;
  parts.height = static_cast<std::int32_t>(height * 2);
  parts.bits = bits;
  if (bits <= 8) parts.palette = randomBytes(std::size_t{4} << bits, 7);
  parts.data = randomBytes(bmpRowBytes(width, bits) * height, 5);
  for (std::size_t i = 3; bits == 32 && !alpha && i < parts.data.size(); i += 4) parts.data[i] = 0;
  const Bytes mask = randomBytes(bmpRowBytes(width, 1) * height, 6);
  return {width, height, bits, joined({bitmapOf(parts), mask})};
}

struct Kind {
  const char* name;
  unsigned bits;
  bool alpha = false;
};
const Kind kKinds[] = {
    {"PaletteOf1Bit", 1}, {"PaletteOf4Bits", 4}, {"PaletteOf8Bits", 8}, {"Rgb24", 24}, {"Rgba32", 32, true}};

class IcoReading : public testing::TestWithParam<Kind> {};

// What lies under a transparent pixel is nobody's business.
TEST_P(IcoReading, GivesThePixelsThatImageMagickReads) {
  OSTRA_NEEDS_PROGRAM("convert");
  for (const auto& [width, height] : {std::pair{1U, 1U}, {1U, 9U}, {kWidth, kHeight}}) {
    const TemporaryFolder folder;
    const Bytes file = fileOf({bitmapEntry(width, height, GetParam().bits, GetParam().alpha)});
    writeFile(folder.path("a.ico"), file);
    const Pixels pixels = decoded(file);
    EXPECT_EQ(pixels.layout.width, width);
    EXPECT_EQ(pixels.layout.height, height);
    const auto ours = asRgba16(pixels), theirs = rgba16ByImageMagick(folder.path("a.ico"));
    ASSERT_EQ(ours.size(), theirs.size());
    for (std::size_t i = 0; i < ours.size(); ++i) {
      if (i % 4 < 3 && ours[i / 4 * 4 + 3] == 0) continue;
      ASSERT_EQ(ours[i], theirs[i]) << "sample " << i << " of " << width << "x" << height;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(EveryKind, IcoReading, testing::ValuesIn(kKinds),
                         [](const testing::TestParamInfo<Kind>& kind) {
                           return std::string(kind.param.name);
                         });

Bytes decodedBytes(const Bytes& file) {
  const Pixels pixels = decoded(file);
  return {pixels.bytes.view.begin(), pixels.bytes.view.end()};
}

// Two pixels of 32 bits, the left one transparent by the mask.
Entry smallEntry(Bytes pixels) {
  BmpParts parts;
  parts.width = 2;
  parts.height = 2;
  parts.bits = 32;
  parts.data = std::move(pixels);
  return {2, 1, 32, joined({bitmapOf(parts), {0x80, 0, 0, 0}})};
}

TEST(IcoAlpha, OfThirtyTwoBitsWinsOverTheMask) {
  EXPECT_EQ(decodedBytes(fileOf({smallEntry({1, 2, 3, 4, 5, 6, 7, 0})})), (Bytes{3, 2, 1, 4, 7, 6, 5, 0}));
  EXPECT_EQ(decodedBytes(fileOf({smallEntry({1, 2, 3, 0, 5, 6, 7, 0})})), (Bytes{3, 2, 1, 0, 7, 6, 5, 255}));
  EXPECT_EQ(decodedBytes(fileOf({smallEntry(Bytes(8, 0))})), (Bytes{0, 0, 0, 0, 0, 0, 0, 255}));
}

TEST(IcoAlpha, NeedsNoMaskWhereThePixelsHaveIt) {
  Entry entry = smallEntry({1, 2, 3, 4, 5, 6, 7, 8});
  entry.contents.resize(entry.contents.size() - 4);
  EXPECT_EQ(decodedBytes(fileOf({entry})), (Bytes{3, 2, 1, 4, 7, 6, 5, 8}));
  entry = smallEntry({1, 2, 3, 0, 5, 6, 7, 0});
  entry.contents.resize(entry.contents.size() - 4);
  EXPECT_EQ(faultOf(decodeBytes(fileOf({entry}))), Fault{FaultKind::damaged});
}

Bytes pngOf(std::uint32_t side) {
  return encoded("public.png", pixelsOf(softSamples(side, side, 4, 8), side, side, CGColorSpaceModel::rgb, 8,
                                        CGImageAlphaInfo::last));
}

TEST(IcoEntries, AreCountedAndTheLargestIsRead) {
  const Bytes file =
      fileOf({bitmapEntry(16, 16, 32, true), {64, 64, 32, pngOf(64)}, bitmapEntry(48, 48, 32, true)});
  const auto opened = std::get<std::unique_ptr<Reader>>(openBytes(file))->opened();
  EXPECT_EQ(opened.type, "com.microsoft.ico");
  EXPECT_EQ(opened.count, 3u);
  EXPECT_EQ(opened.width, 64u);
  EXPECT_EQ(asRgba16(decoded(file)), asRgba16(decoded(pngOf(64))));
}

TEST(IcoEntries, OfOneSizeAreChosenByTheirBits) {
  EXPECT_EQ(propertiesOf(fileOf({bitmapEntry(16, 16, 4), bitmapEntry(16, 16, 24), bitmapEntry(16, 16, 8)}))
                .tree.count("IsIndexed"),
            0u);
}

TEST(IcoEntries, ThatLieOutsideTheFileAreNotRead) {
  Bytes file = fileOf({bitmapEntry(48, 48, 32, true), bitmapEntry(16, 16, 24)});
  file[6 + 12 + 3] = 0x7F;
  const auto opened = std::get<std::unique_ptr<Reader>>(openBytes(file))->opened();
  EXPECT_EQ(opened.count, 2u);
  EXPECT_EQ(opened.width, 16u);
}

TEST(IcoEntries, ThatAreAnimatedAreMoreThanOnePicture) {
  const Bytes animated = withPngChunk(pngOf(16), pngChunk("acTL", Bytes{0, 0, 0, 5, 0, 0, 0, 0}));
  EXPECT_EQ(std::get<std::unique_ptr<Reader>>(openBytes(fileOf({{16, 16, 32, animated}})))->opened().count,
            5u);
}

TEST(IcoCursors, AreReadAndNotWritten) {
  const Bytes cursor = fileOf({bitmapEntry(32, 32, 24)}, 2);
  EXPECT_EQ(std::get<std::unique_ptr<Reader>>(openBytes(cursor))->opened().type, "com.microsoft.cur");
  EXPECT_EQ(decodedBytes(cursor), decodedBytes(fileOf({bitmapEntry(32, 32, 24)})));
  EXPECT_FALSE(CodecDoor::standard().writable().contains("com.microsoft.cur"));
}

TEST(IcoHeader, IsNotSeenInOtherFiles) {
  const Bytes whole = fileOf({bitmapEntry(16, 16, 24)});
  EXPECT_EQ(codecForBytes(whole)->type, "com.microsoft.ico");
  for (const auto& [at, value] : {std::pair{2, 3}, {4, 0}, {9, 7}, {10, 2}, {12, 33}, {18, 0}}) {
    Bytes wrong = whole;
    wrong[static_cast<std::size_t>(at)] = static_cast<std::uint8_t>(value);
    if (at == 18) wrong[19] = 0;
    EXPECT_EQ(codecForBytes(wrong), nullptr) << "byte " << at;
  }
}

constexpr std::string_view kIcon = "com.microsoft.ico";
bool isPng(const Bytes& icon) { return icon[22] == 0x89 && icon[23] == 'P'; }

TEST(IcoWriting, MakesABitmapOrAPng) {
  const auto pixels = [](std::uint32_t side) {
    return pixelsOf(softSamples(side, side, 4, 8), side, side, CGColorSpaceModel::rgb, 8,
                    CGImageAlphaInfo::last);
  };
  EXPECT_FALSE(isPng(encoded(kIcon, pixels(255))));
  EXPECT_TRUE(isPng(encoded(kIcon, pixels(256))));
  EXPECT_TRUE(std::holds_alternative<Fault>(CodecDoor::standard().encode(kIcon, pixels(257), nullptr)));
  Pixels wide = pixels(16);
  wide.profile = NamedSpace{std::string(kCGColorSpaceDisplayP3)};
  const Bytes icon = encoded(kIcon, wide);
  EXPECT_TRUE(isPng(icon));
  EXPECT_EQ(propertiesOf(icon).tree.at("ProfileName"), Value("Display P3"));
}

TEST(IcoWriting, MakesAPngOfTheKindThatOldReadersKnow) {
  const Pixels gray =
      pixelsOf(softSamples(256, 9, 1, 16), 256, 9, CGColorSpaceModel::monochrome, 16, CGImageAlphaInfo::none);
  const Bytes icon = encoded(kIcon, gray);
  ASSERT_TRUE(isPng(icon));
  EXPECT_EQ(icon[22 + 24], 8) << "bits";
  EXPECT_EQ(icon[22 + 25], 6) << "RGB with alpha";
  auto expected = asRgba16(gray);
  for (std::uint16_t& sample : expected) sample = static_cast<std::uint16_t>((sample + 128) / 257 * 257);
  EXPECT_EQ(asRgba16(decoded(icon)), expected);
}

TEST(IcoEntries, InRunLengthCodesAreNotRead) {
  Entry entry = bitmapEntry(4, 4, 8);
  entry.contents[16] = 1;
  EXPECT_EQ(faultOf(decodeBytes(fileOf({entry}))), Fault{FaultKind::damaged});
}

TEST(IcoWriting, KeepsTheMetadataOfAPng) {
  const Bytes described =
      withPngChunk(pngOf(16), pngChunk("tEXt", bytesOfText(std::string("Artist\0a name", 13))));
  const Bytes source = fileOf({{16, 16, 32, described}});
  const Properties properties = propertiesOf(source);
  const Bytes icon = encoded(kIcon, decoded(source), &properties);
  ASSERT_TRUE(isPng(icon));
  EXPECT_NE(positionOf("Artist", icon), icon.size());
}

TEST(IcoWriting, KeepsAnIconThatIsAllTransparent) {
  const Bytes icon = encoded(
      kIcon, pixelsOf(Bytes(16 * 16 * 4, 0), 16, 16, CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::last));
  EXPECT_EQ(decodedBytes(icon), Bytes(16 * 16 * 4, 0));
}

}  // namespace
}  // namespace ostra::test
