#include <gtest/gtest.h>

#include "tests/platform/imageio/bmp_files.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

struct Sample {
  const char* name;
  std::vector<std::string> settings;
  const char* extension;
  /// Bytes at the end that hold nothing of the picture: padding, a footer, the mark behind the last run.
  std::size_t mayMiss;
};

class PlainDamage : public testing::TestWithParam<Sample> {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    std::vector<std::string> words = {"-size",  "23x17",  "-seed", "3", "plasma:tomato-steelblue",
                                      "-strip", "-depth", "8"};
    words.insert(words.end(), GetParam().settings.begin(), GetParam().settings.end());
    file_ = madeByImageMagick(words, GetParam().extension);
    whole_ = asRgba16(decoded(file_));
  }

  Bytes file_;
  std::vector<std::uint16_t> whole_;
};

// Half a picture is never taken for a whole one.
TEST_P(PlainDamage, AFileThatIsCutOffIsRefusedOrComplete) {
  std::size_t complete = 0;
  for (std::size_t size = 0; size < file_.size(); ++size) {
    const auto answer = decodeBytes(ByteView(file_).first(size));
    if (faultOf(answer)) continue;
    ++complete;
    ASSERT_EQ(asRgba16(std::get<Pixels>(answer)), whole_) << "cut to " << size << " of " << file_.size();
  }
  EXPECT_EQ(complete, GetParam().mayMiss);
}

TEST_P(PlainDamage, AFlippedBitNeverCrashes) {
  std::size_t refused = 0;
  for (std::size_t i = 0; i < std::min<std::size_t>(file_.size(), 150) * 8; ++i) {
    Bytes flipped = file_;
    flipped[i / 8] ^= static_cast<std::uint8_t>(1u << i % 8);
    Limits limits;
    limits.pixels = 100'000;
    auto opened = openBytes(flipped, limits);
    if (std::holds_alternative<Fault>(opened)) {
      ++refused;
      continue;
    }
    Reader& reader = *std::get<std::unique_ptr<Reader>>(opened);
    if (faultOf(reader.decode(0))) ++refused;
    reader.properties(0);
  }
  EXPECT_GT(refused, 0u);
}

INSTANTIATE_TEST_SUITE_P(
    EveryFormat, PlainDamage,
    testing::Values(
        Sample{"BmpRgb", {"-type", "TrueColor"}, "bmp", 3},
        Sample{"BmpRgba", {"-alpha", "set", "-channel", "A", "-evaluate", "set", "50%"}, "bmp", 0},
        Sample{"BmpPalette", {"-colors", "15", "-type", "palette"}, "bmp", 0},
        Sample{"BmpRunLengths", {"-colors", "5", "-type", "palette", "-compress", "RLE"}, "bmp", 4},
        Sample{"PnmRgb", {}, "ppm", 0}, Sample{"PnmRgb16", {"-depth", "16"}, "ppm", 0},
        Sample{"PnmBits", {"-monochrome"}, "pbm", 0},
        Sample{"PamRgba", {"-alpha", "set", "-channel", "A", "-evaluate", "set", "50%"}, "pam", 0},
        Sample{"TgaRgb", {}, "tga", 0}, Sample{"TgaGray", {"-colorspace", "gray"}, "tga", 0},
        Sample{"TgaPalette", {"-colors", "15", "-type", "palette"}, "tga", 0},
        Sample{"TgaRunLengths", {"-colors", "5", "-type", "TrueColor", "-compress", "RLE"}, "tga", 0},
        Sample{"IcoRgba", {"-alpha", "set", "-channel", "A", "-evaluate", "set", "50%"}, "ico", 0},
        Sample{"IcoPalette", {"-colors", "15", "-type", "palette"}, "ico", 0}),
    [](const testing::TestParamInfo<Sample>& sample) { return std::string(sample.param.name); });

// The last number of a picture in text may lose digits without anybody's noticing; that is all.
TEST(PlainDamageOfText, LosesAtMostTheLastDigits) {
  const std::string text = "P2 3 2 255 10 20 30 40 50 60 ";
  const auto whole = asRgba16(decoded(bytesOfText(text)));
  for (std::size_t size = 0; size + 3 < text.size(); ++size)
    EXPECT_TRUE(faultOf(decodeBytes(bytesOfText(text.substr(0, size))))) << size;
  EXPECT_EQ(asRgba16(decoded(bytesOfText(text.substr(0, text.size() - 1)))), whole);
}

std::optional<Fault> faultWithin(const Bytes& file, const Limits& limits = {}) {
  return faultOf(decodeBytes(file, limits));
}
Fault tooMuch(LimitName name) { return {FaultKind::limit, name}; }

BmpParts bmpOf(std::uint32_t width, std::int32_t height, unsigned bits, std::uint32_t compression = 0) {
  BmpParts parts;
  parts.width = width;
  parts.height = height;
  parts.bits = bits;
  parts.compression = compression;
  if (bits <= 8) parts.palette = Bytes(std::size_t{4} << bits, 1);
  return parts;
}

TEST(HostileBitmaps, AreRefusedBeforeTheirMemoryIsTaken) {
  EXPECT_EQ(faultWithin(bmpFile(bmpOf(INT32_MAX, INT32_MAX, 32))), tooMuch(LimitName::pixels));
  EXPECT_EQ(faultWithin(bmpFile(bmpOf(INT32_MAX, INT32_MIN + 1, 1))), tooMuch(LimitName::pixels));
  BmpParts packed = bmpOf(30000, 30000, 8, 1);
  packed.data = {0, 1};
  EXPECT_EQ(faultWithin(bmpFile(packed)), tooMuch(LimitName::compressionRatio));
  Limits limits;
  limits.decodedBytes = 399;
  EXPECT_EQ(faultWithin(bmpFile(bmpOf(10, 10, 24)), limits), tooMuch(LimitName::decodedBytes));
}

TEST(HostileBitmaps, WithAHeaderThatMakesNoSenseAreRefused) {
  for (const auto& [width, height] : {std::pair{0U, 1}, {1U, 0}, {0x80000000U, 1}, {1U, INT32_MIN}})
    EXPECT_TRUE(faultWithin(bmpFile(bmpOf(width, height, 24)))) << width << "x" << height;
  for (const unsigned bits : {0U, 3U, 12U, 48U, 64U, 65535U}) {
    BmpParts parts = bmpOf(1, 1, 24);
    parts.bits = bits;
    parts.data = Bytes(64, 1);
    EXPECT_EQ(faultWithin(bmpFile(parts)), Fault{FaultKind::damaged}) << bits;
  }
  // Pictures of other formats, ink, run lengths of another depth, masks without order.
  for (const auto& [bits, compression] :
       {std::pair{24U, 4U}, {24U, 5U}, {32U, 11U}, {8U, 2U}, {4U, 1U}, {24U, 3U}, {8U, 3U}, {24U, 9U}}) {
    BmpParts parts = bmpOf(1, 1, bits, compression);
    parts.data = Bytes(64, 1);
    EXPECT_EQ(faultWithin(bmpFile(parts)), Fault{FaultKind::damaged}) << bits << " " << compression;
  }
  BmpParts parts = bmpOf(1, 1, 16, 3);
  parts.data = Bytes(4, 1);
  parts.masks = {0x0F0F, 0x00F0, 0xF000, 0};
  EXPECT_TRUE(faultWithin(bmpFile(parts))) << "a mask with a gap";
  parts.masks = {0xF0000, 0x00F0, 0x000F, 0};
  EXPECT_TRUE(faultWithin(bmpFile(parts))) << "a mask outside the pixel";
}

TEST(HostileBitmaps, WithPixelsOutsideTheFileAreRefused) {
  BmpParts parts = bmpOf(4, 4, 24);
  parts.data = Bytes(48, 1);
  const Bytes whole = bmpFile(parts);
  EXPECT_FALSE(faultWithin(whole));
  for (const std::uint32_t at : {1U, 53U, 55U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    Bytes file = whole;
    for (std::size_t i = 0; i < 4; ++i) file[10 + i] = static_cast<std::uint8_t>(at >> 8 * i);
    EXPECT_TRUE(faultWithin(file)) << at;
  }
  Bytes file = whole;
  file[10] = 0;
  EXPECT_FALSE(faultWithin(file)) << "not said: behind the header";
}

TEST(HostilePortablePictures, AreRefusedBeforeTheirMemoryIsTaken) {
  EXPECT_EQ(faultWithin(bytesOfText("P6 999999999 999999999 255 ")), tooMuch(LimitName::pixels));
  EXPECT_EQ(faultWithin(bytesOfText("P4 30000 30000 ")), tooMuch(LimitName::compressionRatio));
  EXPECT_EQ(faultWithin(bytesOfText("P5 99 99 255 ")), Fault{FaultKind::damaged});
  Limits limits;
  limits.metadataBytes = 5;
  EXPECT_EQ(faultWithin(bytesOfText("P5\n# 123456\n1 1 255 a"), limits), tooMuch(LimitName::metadataBytes));
  limits.frames = 2;
  limits.metadataBytes = 99;
  const auto opened = openBytes(bytesOfText("P5 1 1 255 aP5 1 1 255 aP5 1 1 255 a"), limits);
  EXPECT_EQ(std::get<std::unique_ptr<Reader>>(opened)->opened().count, 2u);
}

Bytes tgaHeader(unsigned type, unsigned bits, unsigned side) {
  Bytes file = {0, 0, static_cast<std::uint8_t>(type), 0, 0, 0, 0, 0, 0, 0, 0, 0};
  appendLittle(file, side, 2);
  appendLittle(file, side, 2);
  appendLittle(file, bits, 2);
  return file;
}

TEST(HostileTargas, AreRefusedBeforeTheirMemoryIsTaken) {
  EXPECT_EQ(faultWithin(tgaHeader(2, 32, 65535)), tooMuch(LimitName::pixels));
  EXPECT_EQ(faultWithin(tgaHeader(10, 24, 30000)), tooMuch(LimitName::compressionRatio));
}

TEST(HostileTargas, WithARunBeyondTheLastPixelAreRefused) {
  EXPECT_FALSE(faultWithin(joined({tgaHeader(11, 8, 2), {0x83, 7}})));
  EXPECT_EQ(faultWithin(joined({tgaHeader(11, 8, 2), {0x84, 7}})), Fault{FaultKind::damaged});
  EXPECT_EQ(faultWithin(joined({tgaHeader(11, 8, 2), {0x82, 7}})), Fault{FaultKind::damaged});
  EXPECT_EQ(faultWithin(joined({tgaHeader(11, 8, 2), {0x03, 7, 7, 7}})), Fault{FaultKind::damaged});
}

TEST(HostileTargas, WithAMapOutsideTheFileAreRefused) {
  Bytes file = tgaHeader(1, 8, 1);
  file[1] = 1;
  file[5] = 0xFF;
  file[6] = 0xFF;
  file[7] = 32;
  EXPECT_TRUE(faultWithin(joined({file, Bytes(100, 0)})));
}

TEST(HostileTargas, WithAnExtensionOutsideTheFileHaveNone) {
  for (const std::uint32_t at : {19U, 40U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    Bytes file = joined({tgaHeader(3, 8, 1), {7}, Bytes(30, 4)});
    appendLittle(file, at, 4);
    appendLittle(file, 0, 4);
    EXPECT_FALSE(faultWithin(joined({file, bytesOfText("TRUEVISION-XFILE."), {0}}))) << at;
  }
}

TEST(HostileIcons, AreRefusedBeforeTheirMemoryIsTaken) {
  const Bytes bitmap = bitmapOf(bmpOf(INT32_MAX, INT32_MAX - 1, 32));
  Bytes file = {0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 1, 0, 32, 0};
  appendLittle(file, bitmap.size(), 4);
  appendLittle(file, 22, 4);
  EXPECT_EQ(faultWithin(joined({file, bitmap})), tooMuch(LimitName::pixels));
}

TEST(HostileIcons, WithoutAnyPictureAreRefused) {
  Bytes file = {0, 0, 1, 0, 255, 255, 16, 16, 0, 0, 1, 0, 32, 0};
  appendLittle(file, 40, 4);
  appendLittle(file, 0x7FFFFFFF, 4);
  EXPECT_EQ(faultWithin(joined({file, Bytes(200, 0)})), Fault{FaultKind::damaged});
}

}  // namespace
}  // namespace ostra::test
