#include <gtest/gtest.h>

#include "tests/platform/imageio/modules/heif_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

constexpr auto kOpaque = CGImageAlphaInfo::noneSkipLast;
constexpr auto kAlpha = CGImageAlphaInfo::last;

/// Both formats in the boxes of HEIF, each with its tools.
struct Format {
  const char* type;
  const char* extension;
  unsigned deepBits;
  double least;  // decibels that the pixels keep at the usual quality
};

class HeifWriting : public testing::TestWithParam<Format> {
 protected:
  void SetUp() override {
    for (const char* name : {"convert", "heif-convert", "avifdec", "exiftool"}) OSTRA_NEEDS_PROGRAM(name);
  }

  std::string path() const { return folder.path(std::string("a.") + GetParam().extension); }
  Bytes written(const Pixels& pixels, const Properties* properties = nullptr) const {
    const Bytes file = encoded(GetParam().type, pixels, properties);
    writeFile(path(), file);
    return file;
  }
  /// By the format's own tool, turned as the file says.
  std::string shown() const {
    const std::string png = folder.path("shown.png");
    if (std::string_view(GetParam().extension) == "heic") {
      run({"heif-convert", path(), png});
    } else {
      run({"avifdec", "-j", "1", path(), png});
    }
    return png;
  }
  std::string told(const std::string& tag) const {
    std::string text = run({"exiftool", "-s3", "-n", tag, path()});
    while (!text.empty() && text.back() == '\n') text.pop_back();
    return text;
  }

  TemporaryFolder folder;
};

Pixels in(const char* space, Pixels pixels) {
  pixels.profile = NamedSpace{space};
  return pixels;
}

TEST_P(HeifWriting, ThePixelsAreNearlyTheSameForItsOwnToolAndForUs) {
  for (const auto& [width, height] : {std::pair{64u, 64u}, {47u, 33u}, {300u, 200u}}) {
    for (const auto alpha : {kOpaque, kAlpha}) {
      const Pixels pixels = softPixels(width, height, CGColorSpaceModel::rgb, 8, alpha);
      const auto source = asRgba16(pixels);
      const Bytes file = written(pixels);
      EXPECT_GT(peakSignalToNoise(rgba16ByImageMagick(shown()), source), GetParam().least) << width;
      EXPECT_GT(peakSignalToNoise(asRgba16(decoded(file)), source), GetParam().least) << width;
    }
  }
}

TEST_P(HeifWriting, OddAndTinySizesAreWrittenOrRefusedWhole) {
  for (const auto& [width, height] : {std::pair{1u, 1u}, {1u, 7u}, {7u, 1u}, {2u, 3u}, {65u, 63u}}) {
    const Pixels pixels = softPixels(width, height, CGColorSpaceModel::rgb, 8, kOpaque);
    const Bytes file = written(pixels);
    EXPECT_GT(peakSignalToNoise(asRgba16(decoded(file)), asRgba16(pixels)), 30) << width << "x" << height;
  }
}

TEST_P(HeifWriting, DeepPixelsStayDeep) {
  const Pixels pixels = softPixels(64, 48, CGColorSpaceModel::rgb, 16, kOpaque);
  const Bytes file = written(pixels);
  EXPECT_EQ(propertiesOf(file).tree.at("Depth"), Value(static_cast<int>(GetParam().deepBits)));
  EXPECT_GT(peakSignalToNoise(asRgba16(decoded(file)), asRgba16(pixels)), GetParam().least + 1);
  EXPECT_GT(peakSignalToNoise(rgba16ByImageMagick(shown()), asRgba16(pixels)), GetParam().least);
}

TEST_P(HeifWriting, GrayIsOnePlane) {
  for (const unsigned bits : {8u, 16u}) {
    for (const auto alpha : {CGImageAlphaInfo::none, kAlpha}) {
      const Pixels pixels = softPixels(64, 48, CGColorSpaceModel::monochrome, bits, alpha);
      const Bytes file = written(pixels);
      const Pixels back = decoded(file);
      EXPECT_EQ(back.layout.model, CGColorSpaceModel::monochrome);
      EXPECT_EQ(back.layout.bitsPerPixel, pixels.layout.bitsPerPixel);
      EXPECT_GT(peakSignalToNoise(asRgba16(back), asRgba16(pixels)), GetParam().least) << bits;
      EXPECT_GT(peakSignalToNoise(rgba16ByImageMagick(shown()), asRgba16(pixels)), GetParam().least) << bits;
    }
  }
}

TEST_P(HeifWriting, WhatIsOpaqueStaysOpaque) {
  Pixels pixels = softPixels(64, 48, CGColorSpaceModel::rgb, 8, kAlpha);
  Bytes samples(pixels.bytes.view.begin(), pixels.bytes.view.end());
  for (std::size_t i = 3; i < samples.size(); i += 4) samples[i] = i % (64 * 4) < 120 ? 0 : 255;
  pixels.bytes = SharedBytes::adopt(samples);
  const auto back = asRgba16(decoded(written(pixels)));
  const auto source = asRgba16(pixels);
  int wrong = 0;
  for (std::size_t i = 3; i < back.size(); i += 4) wrong += back[i] != source[i];
  EXPECT_EQ(wrong, 0);
}

TEST_P(HeifWriting, EveryOrientationIsShownByItsOwnToolAndToldTwice) {
  OSTRA_NEEDS_PROGRAM("heif-convert");
  const Pixels pixels = softPixels(70, 40, CGColorSpaceModel::rgb, 8, kOpaque);
  writeFile(folder.path("upright.png"), encoded("public.png", pixels));
  for (int orientation = 1; orientation <= 8; ++orientation) {
    Properties properties;
    properties.tree.emplace("Orientation", std::int64_t{orientation});
    const Bytes file = written(pixels, &properties);
    EXPECT_EQ(propertiesOf(file).tree.at("Orientation"), Value(orientation));
    EXPECT_EQ(told("-IFD0:Orientation"), std::to_string(orientation));
    EXPECT_GT(peakSignalToNoise(asRgba16(decoded(file)), asRgba16(pixels)), GetParam().least);
    // A tool that turns, for both.
    run({"heif-convert", path(), folder.path("turned.png")});
    run({"convert", folder.path("upright.png"), "-orient",
         std::vector<std::string>{"top-left", "top-right", "bottom-right", "bottom-left", "left-top",
                                  "right-top", "right-bottom",
                                  "left-bottom"}[static_cast<std::size_t>(orientation) - 1],
         "-auto-orient", folder.path("expected.png")});
    EXPECT_GT(peakSignalToNoise(rgba16ByImageMagick(folder.path("turned.png")),
                                rgba16ByImageMagick(folder.path("expected.png"))),
              GetParam().least - 6)  // the other tool's own conversion
        << orientation;
  }
}

TEST_P(HeifWriting, ProfileExifAndXmpAreWritten) {
  run({"convert", "-size", "47x33", "plasma:tomato-steelblue", folder.path("b.jpg")});
  run({"exiftool", "-q", "-overwrite_original", "-Make=N", "-XMP-dc:Title=T", "-GPSLatitude=1.5",
       "-GPSLatitudeRef=N", folder.path("b.jpg")});
  const Properties properties = propertiesOf(readFile(folder.path("b.jpg")));
  for (const char* space : {"kCGColorSpaceSRGB", "kCGColorSpaceDisplayP3", "kCGColorSpaceAdobeRGB1998"}) {
    const Pixels pixels = in(space, softPixels(47, 33, CGColorSpaceModel::rgb, 8, kOpaque));
    const Bytes file = written(pixels, &properties);
    EXPECT_EQ(told("-IFD0:Make"), "N");
    EXPECT_EQ(told("-XMP-dc:Title"), "T");
    EXPECT_EQ(told("-GPS:GPSLatitude"), "1.5");
    run({"exiftool", "-q", "-b", "-icc_profile", "-w!", "icc", path()});
    const CGColorSpaceRef stated = CGColorSpace::createWithName(space);
    const Bytes icc = readFile(folder.path("a.icc"));
    EXPECT_TRUE(std::equal(icc.begin(), icc.end(), stated->iccData().begin(), stated->iccData().end()))
        << space;
    const Properties back = propertiesOf(file);
    EXPECT_EQ(back.tree.at("{TIFF}").get<Dictionary>()->at("Make"), Value("N"));
    EXPECT_EQ(told("-warning"), "");
  }
}

TEST_P(HeifWriting, WhatItCannotHoldMakesNoFile) {
  const Pixels ink =
      pixelsOf(softSamples(16, 16, 4, 8), 16, 16, CGColorSpaceModel::cmyk, 8, CGImageAlphaInfo::none);
  EXPECT_TRUE(std::holds_alternative<Fault>(CodecDoor::standard().encode(GetParam().type, ink, nullptr)));
  Pixels wrong = softPixels(16, 16, CGColorSpaceModel::rgb, 8, kOpaque);
  wrong.profile = IccProfile{randomBytes(300)};
  EXPECT_TRUE(std::holds_alternative<Fault>(CodecDoor::standard().encode(GetParam().type, wrong, nullptr)));
}

TEST_P(HeifWriting, TheSamePictureMakesTheSameFile) {
  const Pixels pixels = softPixels(47, 33, CGColorSpaceModel::rgb, 8, kAlpha);
  EXPECT_EQ(written(pixels), written(pixels));
}

TEST_P(HeifWriting, QualityIsObeyed) {
  const Pixels pixels = pixelsOf(randomBytes(64 * 64 * 4), 64, 64, CGColorSpaceModel::rgb, 8, kOpaque);
  std::size_t size = 0;
  for (const double quality : {0.2, 0.5, 0.9, 1.0}) {
    Properties properties;
    properties.tree.emplace("kCGImageDestinationLossyCompressionQuality", quality);
    const std::size_t now = written(pixels, &properties).size();
    EXPECT_GT(now, size) << quality;
    size = now;
  }
}

TEST_P(HeifWriting, OneThatIsCutOffAnywhereIsRefused) {
  Properties properties;
  properties.tree.emplace("Orientation", std::int64_t{6});
  const Bytes whole = written(softPixels(47, 33, CGColorSpaceModel::rgb, 8, kAlpha), &properties);
  for (std::size_t size = 0; size < whole.size(); ++size)
    ASSERT_TRUE(faultOf(decodeBytes(ByteView(whole).first(size)))) << size << " of " << whole.size();
}

INSTANTIATE_TEST_SUITE_P(Both, HeifWriting,
                         testing::Values(Format{"public.heic", "heic", 10, 38},
                                         Format{"public.avif", "avif", 12, 44}),
                         [](const testing::TestParamInfo<Format>& format) {
                           return std::string(format.param.extension);
                         });

// The checksum in the file tells.
TEST(HeicWriting, NoDamageToACodedPictureOfOursGoesUnseen) {
  const Pixels pixels = pixelsOf(randomBytes(96 * 80 * 4), 96, 80, CGColorSpaceModel::rgb, 8, kOpaque);
  const Bytes whole = encoded("public.heic", pixels);
  const auto source = asRgba16(decoded(whole));
  const std::size_t from = positionOf("mdat", whole) + 4;
  int refused = 0;
  for (std::size_t i = 0; i < 300; ++i) {
    Bytes damaged = whole;
    damaged[from + i * 7919 % (whole.size() - from)] ^= static_cast<std::uint8_t>(1u << i % 8);
    const auto answer = decodeBytes(damaged);
    if (faultOf(answer)) {
      ++refused;
    } else {
      EXPECT_EQ(asRgba16(std::get<Pixels>(answer)), source) << i;
    }
  }
  EXPECT_GE(refused, 290);
}

// The encoder refuses them: a clean fault, so that the engine can say so.
TEST(HeicWriting, AThinPictureIsWrittenOrAFault) {
  for (const auto& [width, height] : {std::pair{5000u, 16u}, {16u, 9000u}}) {
    const Pixels pixels = softPixels(width, height, CGColorSpaceModel::rgb, 8, kOpaque);
    const auto answer = CodecDoor::standard().encode("public.heic", pixels, nullptr);
    const Bytes* const file = std::get_if<Bytes>(&answer);
    if (file == nullptr) continue;
    EXPECT_GT(peakSignalToNoise(asRgba16(decoded(*file)), asRgba16(pixels)), 38) << width;
  }
}

}  // namespace
}  // namespace ostra::test
