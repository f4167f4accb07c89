#include <cmath>

#include <gtest/gtest.h>

#include "platform/imageio/codecs/jpeg.h"
#include "platform/imageio/property_keys.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

struct Kind {
  const char* name;
  CGColorSpaceModel model;
  CGImageAlphaInfo alpha;
  unsigned samples;
};

std::vector<Kind> allKinds() {
  return {{"Gray", CGColorSpaceModel::monochrome, CGImageAlphaInfo::none, 1},
          {"Rgb", CGColorSpaceModel::rgb, CGImageAlphaInfo::none, 3},
          {"RgbSkip", CGColorSpaceModel::rgb, CGImageAlphaInfo::noneSkipLast, 4},
          {"Cmyk", CGColorSpaceModel::cmyk, CGImageAlphaInfo::none, 4}};
}

Pixels softPixels(const Kind& kind, unsigned bits) {
  return pixelsOf(softSamples(kWidth, kHeight, kind.samples, bits), kWidth, kHeight, kind.model, bits,
                  kind.alpha);
}

Pixels softRgb() { return softPixels(allKinds()[1], 8); }

Properties withQuality(double quality) {
  Properties properties;
  properties.tree.emplace(kCGImageDestinationLossyCompressionQuality, quality);
  return properties;
}

// The samples of a file as ImageMagick reads them: "gray", "rgb" or "cmyk".
Bytes samplesByImageMagick(const Bytes& file, const std::string& map) {
  const TemporaryFolder folder;
  writeFile(folder.path("a.jpg"), file);
  run({"convert", folder.path("a.jpg"), "-depth", "8", map + ":" + folder.path("raw")});
  return readFile(folder.path("raw"));
}

std::string identified(const Bytes& file, const std::string& format) {
  const TemporaryFolder folder;
  writeFile(folder.path("a.jpg"), file);
  return run({"identify", "-format", format, folder.path("a.jpg")});
}

std::string exiftool(const Bytes& file, const std::string& tag) {
  const TemporaryFolder folder;
  writeFile(folder.path("a.jpg"), file);
  return run({"exiftool", "-s3", "-n", tag, folder.path("a.jpg")});
}

double meanDifference(const Bytes& a, const Bytes& b) {
  if (a.size() != b.size()) return 255;
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += std::abs(a[i] - b[i]);
  return sum / static_cast<double>(a.size());
}

std::string nameOf(const testing::TestParamInfo<Kind>& info) { return info.param.name; }

class JpegWriting : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override { OSTRA_NEEDS_PROGRAM("convert"); }
};

TEST_P(JpegWriting, KeepsTheSamplesAsImageMagickReadsThem) {
  const Kind kind = GetParam();
  const Bytes file = encoded("public.jpeg", softPixels(kind, 8));
  const std::string map = kind.samples == 1 ? "gray" : kind.model == CGColorSpaceModel::cmyk ? "cmyk" : "rgb";
  Bytes expected;
  const Bytes samples = softSamples(kWidth, kHeight, kind.samples, 8);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (kind.alpha == CGImageAlphaInfo::none || i % 4 != 3) expected.push_back(samples[i]);
  }
  EXPECT_LT(meanDifference(samplesByImageMagick(file, map), expected), 1.5);
}

TEST_P(JpegWriting, IsAcceptedByAStrictDecoder) {
  OSTRA_NEEDS_PROGRAM("djpeg");
  OSTRA_NEEDS_PROGRAM("jpeginfo");
  const TemporaryFolder folder;
  writeFile(folder.path("a.jpg"), encoded("public.jpeg", softPixels(GetParam(), 8)));
  const ProgramResult result =
      runProgram({"djpeg", "-strict", "-outfile", "/dev/null", folder.path("a.jpg")});
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.status, 0);
  // It knows no ink.
  if (GetParam().model == CGColorSpaceModel::cmyk) return;
  EXPECT_NE(run({"jpeginfo", "-c", folder.path("a.jpg")}).find("OK"), std::string::npos);
}

TEST_P(JpegWriting, RoundsSixteenBitsToTheNearest) {
  const Kind kind = GetParam();
  const Bytes deep = randomBytes(kWidth * kHeight * kind.samples * 2);
  Bytes reduced;
  for (std::size_t i = 0; i < deep.size(); i += 2)
    reduced.push_back(static_cast<std::uint8_t>(std::lround((deep[i] | deep[i + 1] << 8) / 257.0)));
  EXPECT_EQ(encoded("public.jpeg", pixelsOf(deep, kWidth, kHeight, kind.model, 16, kind.alpha)),
            encoded("public.jpeg", pixelsOf(reduced, kWidth, kHeight, kind.model, 8, kind.alpha)));
}

INSTANTIATE_TEST_SUITE_P(EveryKind, JpegWriting, testing::ValuesIn(allKinds()), nameOf);

class JpegOptions : public testing::Test {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    OSTRA_NEEDS_PROGRAM("exiftool");
  }
};

TEST(JpegQuality, GrowsFromTheSmallestToTheBest) {
  EXPECT_EQ(jpegQuality(0), 1);
  EXPECT_EQ(jpegQuality(0.9), 92);
  EXPECT_EQ(jpegQuality(1), 100);
  EXPECT_EQ(jpegQuality(-3), 1);
  EXPECT_EQ(jpegQuality(7), 100);
  for (int percent = 0; percent < 100; ++percent)
    EXPECT_LE(jpegQuality(percent / 100.0), jpegQuality((percent + 1) / 100.0));
}

TEST_F(JpegOptions, TheQualityIsTheOneAskedForAndHighOnesKeepAllColour) {
  const Properties high = withQuality(0.9), low = withQuality(0.5);
  EXPECT_EQ(identified(encoded("public.jpeg", softRgb(), &high), "%Q %[jpeg:sampling-factor]"),
            "92 1x1,1x1,1x1");
  EXPECT_EQ(identified(encoded("public.jpeg", softRgb(), &low), "%Q %[jpeg:sampling-factor]"),
            "51 2x2,1x1,1x1");
}

TEST_F(JpegOptions, AProgressiveSourceIsWrittenSequentially) {
  Properties properties;
  properties.tree.emplace("{JFIF}", Dictionary{{"IsProgressive", true}});
  EXPECT_EQ(identified(encoded("public.jpeg", softRgb(), &properties), "%[interlace]"), "None");
}

TEST_F(JpegOptions, TheStatedDensityIsJfifs) {
  Properties properties;
  EXPECT_EQ(exiftool(encoded("public.jpeg", softRgb(), &properties), "-JFIF:ResolutionUnit"), "0\n");
  properties.tree.emplace("DPIWidth", 300.0);
  properties.tree.emplace("DPIHeight", 150.0);
  const Bytes file = encoded("public.jpeg", softRgb(), &properties);
  EXPECT_EQ(exiftool(file, "-JFIF:ResolutionUnit"), "1\n");
  EXPECT_EQ(exiftool(file, "-JFIF:XResolution"), "300\n");
  EXPECT_EQ(exiftool(file, "-JFIF:YResolution"), "150\n");
}

TEST_F(JpegOptions, AlphaIsPutOnWhite) {
  const Bytes pixel = {200, 100, 0, 128};
  Bytes samples;
  for (int i = 0; i < 64; ++i) samples.insert(samples.end(), pixel.begin(), pixel.end());
  const Properties best = withQuality(1);
  const Bytes file = encoded(
      "public.jpeg", pixelsOf(samples, 8, 8, CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::last), &best);
  const Bytes back = samplesByImageMagick(file, "rgb");
  for (int c = 0; c < 3; ++c) EXPECT_NEAR(back[c], 255 + (pixel[c] - 255) * 128 / 255.0, 1.5) << c;
}

TEST_F(JpegOptions, ASideBeyondTheFormatIsAFault) {
  const Pixels wide =
      pixelsOf(Bytes(65501), 65501, 1, CGColorSpaceModel::monochrome, 8, CGImageAlphaInfo::none);
  EXPECT_TRUE(std::holds_alternative<Fault>(CodecDoor::standard().encode("public.jpeg", wide, nullptr)));
  const Pixels fits =
      pixelsOf(Bytes(65500), 65500, 1, CGColorSpaceModel::monochrome, 8, CGImageAlphaInfo::none);
  EXPECT_TRUE(std::holds_alternative<Bytes>(CodecDoor::standard().encode("public.jpeg", fits, nullptr)));
}

TEST_F(JpegOptions, InkCarriesTheAdobeMark) {
  const Bytes file = encoded("public.jpeg", softPixels(allKinds()[3], 8));
  EXPECT_EQ(exiftool(file, "-Adobe:ColorTransform"), "2\n");
}

}  // namespace
}  // namespace ostra::test
