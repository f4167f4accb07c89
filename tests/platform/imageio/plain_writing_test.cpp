#include <gtest/gtest.h>

#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

constexpr std::string_view kBmp = "com.microsoft.bmp", kPnm = "public.pbm", kTga = "com.truevision.tga-image",
                           kIco = "com.microsoft.ico";

struct Kind {
  const char* name;
  std::string_view type;
  const char* extension;
  CGColorSpaceModel model;
  CGImageAlphaInfo alpha;
  unsigned bits = 8;
};

constexpr auto kGray = CGColorSpaceModel::monochrome, kRgb = CGColorSpaceModel::rgb;
constexpr auto kNone = CGImageAlphaInfo::none, kSkip = CGImageAlphaInfo::noneSkipLast,
               kLast = CGImageAlphaInfo::last;

const Kind kKinds[] = {
    {"BmpGray", kBmp, "bmp", kGray, kNone},
    {"BmpRgb", kBmp, "bmp", kRgb, kNone},
    {"BmpRgbWithAFourth", kBmp, "bmp", kRgb, kSkip},
    {"BmpRgba", kBmp, "bmp", kRgb, kLast},
    {"BmpGrayWithAlpha", kBmp, "bmp", kGray, kLast},
    {"BmpOfDeepGray", kBmp, "bmp", kGray, kNone, 16},
    {"BmpOfDeepRgb", kBmp, "bmp", kRgb, kSkip, 16},
    {"BmpOfDeepRgba", kBmp, "bmp", kRgb, kLast, 16},
    {"PnmGray", kPnm, "pgm", kGray, kNone},
    {"PnmRgb", kPnm, "ppm", kRgb, kSkip},
    {"PnmRgba", kPnm, "pam", kRgb, kLast},
    {"PnmGrayWithAlpha", kPnm, "pam", kGray, kLast},
    {"PnmOfDeepGray", kPnm, "pgm", kGray, kNone, 16},
    {"PnmOfDeepRgb", kPnm, "ppm", kRgb, kSkip, 16},
    {"PnmOfDeepRgba", kPnm, "pam", kRgb, kLast, 16},
    {"TgaGray", kTga, "tga", kGray, kNone},
    {"TgaRgb", kTga, "tga", kRgb, kSkip},
    {"TgaRgba", kTga, "tga", kRgb, kLast},
    {"TgaGrayWithAlpha", kTga, "tga", kGray, kLast},
    {"TgaOfDeepRgb", kTga, "tga", kRgb, kSkip, 16},
    {"IcoGray", kIco, "ico", kGray, kNone},
    {"IcoRgb", kIco, "ico", kRgb, kSkip},
    {"IcoRgba", kIco, "ico", kRgb, kLast},
    {"IcoOfDeepRgba", kIco, "ico", kRgb, kLast, 16},
};

class PlainWriting : public testing::TestWithParam<Kind> {
 protected:
  static Pixels pixelsOfSize(std::uint32_t width, std::uint32_t height) {
    const Kind& kind = GetParam();
    const unsigned samples = (kind.model == kGray ? 1 : 3) + (kind.alpha == kNone ? 0 : 1);
    return pixelsOf(randomBytes(std::size_t{width} * height * samples * (kind.bits / 8)), width, height,
                    kind.model, kind.bits, kind.alpha);
  }
  // What is left of the samples in the file: 8 bits, or 16 in the one format that has them.
  static std::vector<std::uint16_t> kept(std::vector<std::uint16_t> samples) {
    if (GetParam().type == kPnm) return samples;
    for (std::uint16_t& sample : samples) sample = static_cast<std::uint16_t>((sample + 128) / 257 * 257);
    return samples;
  }
};

TEST_P(PlainWriting, GivesBackThePixels) {
  for (const auto& [width, height] : {std::pair{1U, 1U}, {1U, 9U}, {5U, 2U}, {kWidth, kHeight}}) {
    const Pixels pixels = pixelsOfSize(width, height);
    EXPECT_EQ(asRgba16(decoded(encoded(GetParam().type, pixels))), kept(asRgba16(pixels)))
        << width << "x" << height;
  }
}

TEST_P(PlainWriting, IsReadByImageMagick) {
  OSTRA_NEEDS_PROGRAM("convert");
  for (const auto& [width, height] : {std::pair{1U, 1U}, {1U, 9U}, {kWidth, kHeight}}) {
    const TemporaryFolder folder;
    const std::string path = folder.path(std::string("a.") + GetParam().extension);
    const Pixels pixels = pixelsOfSize(width, height);
    writeFile(path, encoded(GetParam().type, pixels));
    EXPECT_EQ(rgba16ByImageMagick(path), kept(asRgba16(pixels))) << width << "x" << height;
  }
}

INSTANTIATE_TEST_SUITE_P(EveryKind, PlainWriting, testing::ValuesIn(kKinds),
                         [](const testing::TestParamInfo<Kind>& kind) {
                           return std::string(kind.param.name);
                         });

Pixels somePixels(CGColorSpaceModel model, CGImageAlphaInfo alpha) {
  const unsigned samples = (model == kGray ? 1 : 3) + (alpha == kNone ? 0 : 1);
  return pixelsOf(softSamples(5, 3, samples, 8), 5, 3, model, 8, alpha);
}
bool isWritten(std::string_view type, const Pixels& pixels) {
  return std::holds_alternative<Bytes>(CodecDoor::standard().encode(type, pixels, nullptr));
}

// An untagged file is taken for sRGB: other colours in it would be a lie.
TEST(PlainWritingOfColour, IsRefusedWhereTheFormatCannotSayIt) {
  for (const std::string_view type : {kPnm, kTga}) {
    Pixels pixels = somePixels(kRgb, kSkip);
    EXPECT_TRUE(isWritten(type, pixels)) << "untagged " << type;
    pixels.profile = NamedSpace{std::string(kCGColorSpaceSRGB)};
    EXPECT_TRUE(isWritten(type, pixels)) << "sRGB " << type;
    pixels.profile = NamedSpace{std::string(kCGColorSpaceDisplayP3)};
    EXPECT_FALSE(isWritten(type, pixels)) << "Display P3 " << type;
    Pixels gray = somePixels(kGray, kNone);
    gray.profile = NamedSpace{std::string(kCGColorSpaceGenericGrayGamma2_2)};
    EXPECT_TRUE(isWritten(type, gray)) << "gray " << type;
  }
}

TEST(PlainWritingOfColour, EmbedsTheProfileInABitmap) {
  for (const CGImageAlphaInfo alpha : {kSkip, kLast}) {
    Pixels pixels = somePixels(kRgb, alpha);
    pixels.profile = NamedSpace{std::string(kCGColorSpaceAdobeRGB1998)};
    const Bytes file = encoded(kBmp, pixels);
    EXPECT_EQ(propertiesOf(file).tree.at("ProfileName"), Value("Adobe RGB (1998)"));
    EXPECT_EQ(asRgba16(decoded(file)), asRgba16(pixels));
  }
  Pixels plain = somePixels(kRgb, kSkip);
  plain.profile = NamedSpace{std::string(kCGColorSpaceSRGB)};
  EXPECT_EQ(encoded(kBmp, plain)[14], 40) << "the header that every reader knows";
}

TEST(PlainWritingOfColour, EmbedsAGrayProfileInAGrayBitmap) {
  const double white[2] = {0.3457, 0.3585};
  const CGColorSpaceRef linear = CGColorSpace::createCalibrated(white, nullptr, 1.0);
  Pixels pixels = somePixels(kGray, kNone);
  pixels.profile = IccProfile{Bytes(linear->iccData().begin(), linear->iccData().end())};
  const Pixels back = decoded(encoded(kBmp, pixels));
  EXPECT_EQ(back.layout.model, kGray);
  EXPECT_TRUE(std::holds_alternative<IccProfile>(back.profile));
  EXPECT_EQ(asRgba16(back), asRgba16(pixels));
  Pixels transparent = somePixels(kGray, kLast);
  transparent.profile = pixels.profile;
  EXPECT_FALSE(isWritten(kBmp, transparent)) << "it would be RGB with a gray profile";
}

TEST(PlainWritingOfDensity, KeepsItInABitmap) {
  Properties properties;
  properties.tree = {{"DPIWidth", 300.0}, {"DPIHeight", 72.0}};
  const Dictionary tree = propertiesOf(encoded(kBmp, somePixels(kRgb, kSkip), &properties)).tree;
  EXPECT_EQ(tree.at("DPIWidth"), Value(300.0));
  EXPECT_EQ(tree.at("DPIHeight"), Value(72.0));
}

TEST(PlainWritingOfInk, IsRefused) {
  const Pixels ink = pixelsOf(Bytes(4), 1, 1, CGColorSpaceModel::cmyk, 8, kNone);
  for (const std::string_view type : {kBmp, kPnm, kTga, kIco}) EXPECT_FALSE(isWritten(type, ink)) << type;
}

TEST(PlainWritingOfLargePictures, EndsWhereTheFormatEnds) {
  const auto wide = [](std::uint32_t width) { return pixelsOf(Bytes(width), width, 1, kGray, 8, kNone); };
  EXPECT_TRUE(isWritten(kTga, wide(65535)));
  EXPECT_FALSE(isWritten(kTga, wide(65536)));
  EXPECT_TRUE(isWritten(kBmp, wide(65536)));
  EXPECT_TRUE(isWritten(kPnm, wide(65536)));
  // Rows that all lie in the same memory.
  Pixels huge = pixelsOf(Bytes(1 << 16), 1 << 16, 1, kGray, 8, kNone);
  huge.layout.height = 1 << 16;
  huge.layout.bytesPerRow = 0;
  EXPECT_FALSE(isWritten(kBmp, huge)) << "more than 4 GiB";
}

}  // namespace
}  // namespace ostra::test
