#include <cmath>

#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/property_keys.h"
#include "tests/platform/imageio/modules/jpeg2000_files.h"

namespace ostra {
namespace {

using namespace test;

constexpr std::string_view kType = "public.jpeg-2000";

struct Kind {
  const char* name;
  CGColorSpaceModel model;
  CGImageAlphaInfo alpha;
  unsigned samples, bits;
};

std::vector<Kind> allKinds() {
  std::vector<Kind> kinds;
  for (const unsigned bits : {8u, 16u}) {
    kinds.push_back({"Gray", CGColorSpaceModel::monochrome, CGImageAlphaInfo::none, 1, bits});
    kinds.push_back({"GrayAlpha", CGColorSpaceModel::monochrome, CGImageAlphaInfo::last, 2, bits});
    kinds.push_back({"Rgb", CGColorSpaceModel::rgb, CGImageAlphaInfo::none, 3, bits});
    kinds.push_back({"RgbSkip", CGColorSpaceModel::rgb, CGImageAlphaInfo::noneSkipLast, 4, bits});
    kinds.push_back({"Rgba", CGColorSpaceModel::rgb, CGImageAlphaInfo::last, 4, bits});
  }
  return kinds;
}

Pixels pixelsOfKind(const Kind& kind, std::uint32_t width = kWidth, std::uint32_t height = kHeight,
                    unsigned seed = 1) {
  return pixelsOf(randomBytes(std::size_t{width} * height * kind.samples * kind.bits / 8, seed), width,
                  height, kind.model, kind.bits, kind.alpha);
}

class Jpeg2000Writing : public Jpeg2000 {
 protected:
  static Pixels softRgb() {
    return pixelsOf(softSamples(kWidth, kHeight, 4, 8), kWidth, kHeight, CGColorSpaceModel::rgb, 8,
                    CGImageAlphaInfo::noneSkipLast);
  }
  static bool isRefused(const Pixels& pixels, const Properties* properties = nullptr) {
    return std::holds_alternative<Fault>(CodecDoor::standard().encode(kType, pixels, properties));
  }
  std::string toldByExiftool(const Bytes& picture, const std::vector<std::string>& tags) const {
    writeFile(folder.path("told.jp2"), picture);
    std::vector<std::string> words = {"exiftool", "-s3", "-n"};
    words.insert(words.end(), tags.begin(), tags.end());
    words.push_back(folder.path("told.jp2"));
    return run(words);
  }
};

TEST_F(Jpeg2000Writing, EveryKindIsReadBackExactlyByTheFormatsOwnToolAndByUs) {
  for (const Kind& kind : allKinds()) {
    const Pixels pixels = pixelsOfKind(kind);
    const Bytes picture = encoded(kType, pixels);
    EXPECT_EQ(byItsOwnTool(picture), asRgba16(pixels)) << kind.name << kind.bits;
    EXPECT_EQ(asRgba16(decoded(picture)), asRgba16(pixels)) << kind.name << kind.bits;
    const Dictionary tree = propertiesOf(picture).tree;
    EXPECT_EQ(tree.at("Depth"), Value(std::int64_t{kind.bits}));
    EXPECT_EQ(tree.contains("HasAlpha"), kind.alpha == CGImageAlphaInfo::last);
    EXPECT_EQ(tree.at("ColorModel"), Value(kind.samples < 3 ? "Gray" : "RGB"));
  }
}

TEST_F(Jpeg2000Writing, OddSizesAreReadBackExactly) {
  struct Size {
    std::uint32_t width, height;
  };
  for (const Size size : {Size{1, 1}, {1, 7}, {7, 1}, {2, 2}, {3, 64}, {65, 33}, {4097, 3}, {2, 8195}}) {
    for (const Kind& kind : allKinds()) {
      const Pixels pixels = pixelsOfKind(kind, size.width, size.height, size.width);
      const Bytes picture = encoded(kType, pixels);
      EXPECT_EQ(asRgba16(decoded(picture)), asRgba16(pixels)) << kind.name << size.width;
      if (kind.samples == 4) {
        EXPECT_EQ(byItsOwnTool(picture), asRgba16(pixels)) << kind.name << size.width;
      }
    }
  }
}

TEST_F(Jpeg2000Writing, AFlatPictureIsSmallAndExact) {
  const Pixels pixels = pixelsOf(Bytes(std::size_t{300} * 200 * 4, 77), 300, 200, CGColorSpaceModel::rgb, 8,
                                 CGImageAlphaInfo::last);
  const Bytes picture = encoded(kType, pixels);
  EXPECT_LT(picture.size(), 1000u);
  EXPECT_EQ(asRgba16(decoded(picture)), asRgba16(pixels));
}

TEST_F(Jpeg2000Writing, OpacityThatIsMultipliedInIsWrittenStraight) {
  Pixels pixels =
      pixelsOf({50, 25, 100, 100}, 1, 1, CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::premultipliedLast);
  const auto samples = asRgba16(decoded(encoded(kType, pixels)));
  EXPECT_EQ(samples, (std::vector<std::uint16_t>{128 * 257, 64 * 257, 255 * 257, 100 * 257}));
}

TEST_F(Jpeg2000Writing, TheSameBytesComeOutEveryTime) {
  const Properties properties{{{std::string(kCGImagePropertyOrientation), Value(6)}}, nullptr};
  EXPECT_EQ(encoded(kType, softRgb(), &properties), encoded(kType, softRgb(), &properties));
}

TEST_F(Jpeg2000Writing, SpacesThatHaveANumberAreToldByIt) {
  Pixels pixels = softRgb();
  EXPECT_EQ(toldByExiftool(encoded(kType, pixels), {"-ColorSpace"}), "16\n");
  pixels.profile = NamedSpace{std::string(kCGColorSpaceSRGB)};
  const Bytes picture = encoded(kType, pixels);
  EXPECT_EQ(toldByExiftool(picture, {"-ColorSpace"}), "16\n");
  EXPECT_EQ(std::get<NamedSpace>(decoded(picture).profile).name, kCGColorSpaceSRGB);
  Pixels gray = pixelsOf(Bytes(6, 9), 3, 2, CGColorSpaceModel::monochrome, 8, CGImageAlphaInfo::none);
  gray.profile = NamedSpace{std::string(kCGColorSpaceGenericGrayGamma2_2)};
  EXPECT_EQ(toldByExiftool(encoded(kType, gray), {"-ColorSpace"}), "17\n");
}

TEST_F(Jpeg2000Writing, OtherSpacesAreProfiles) {
  Pixels pixels = softRgb();
  pixels.profile = NamedSpace{std::string(kCGColorSpaceDisplayP3)};
  const Bytes picture = encoded(kType, pixels);
  const ByteView p3 = CGColorSpace::createWithName(kCGColorSpaceDisplayP3)->iccData();
  EXPECT_EQ(std::get<IccProfile>(decoded(picture).profile).bytes, Bytes(p3.begin(), p3.end()));
  EXPECT_EQ(toldByExiftool(picture, {"-ColorSpecMethod", "-ProfileDescription"}), "2\nDisplay P3\n");
  // The tool converts to sRGB by the profile: it found one.
  EXPECT_NE(byItsOwnTool(picture), asRgba16(pixels));
}

TEST_F(Jpeg2000Writing, AProfileOfAnotherModelAndInksAreRefused) {
  Pixels pixels = softRgb();
  pixels.profile = NamedSpace{std::string(kCGColorSpaceGenericGrayGamma2_2)};
  EXPECT_TRUE(isRefused(pixels));
  EXPECT_TRUE(isRefused(pixelsOf(Bytes(16), 2, 2, CGColorSpaceModel::cmyk, 8, CGImageAlphaInfo::none)));
}

TEST_F(Jpeg2000Writing, MetadataComesBackAsItWas) {
  made({"-depth", "8"}, {"-C", "a word"});
  run({"exiftool", "-q", "-overwrite_original", "-Make=N", "-Orientation#=6", "-UserComment=said",
       "-XMP-dc:Title=T", "-IPTC:Headline=H", folder.path("a.jp2")});
  const Properties properties = propertiesOf(file("a.jp2"));
  const Bytes picture = encoded(kType, decoded(file("a.jp2")), &properties);
  EXPECT_EQ(
      toldByExiftool(picture, {"-Make", "-Orientation", "-UserComment", "-XMP-dc:Title", "-IPTC:Headline"}),
      "N\n6\nsaid\nT\nH\n");
  EXPECT_LT(positionOf("a word", picture), picture.size());
  const Properties again = propertiesOf(picture);
  EXPECT_EQ(again.carrier->exif, properties.carrier->exif);
  EXPECT_EQ(again.carrier->xmp, properties.carrier->xmp);
  EXPECT_EQ(again.carrier->iptc, properties.carrier->iptc);
  EXPECT_EQ(again.carrier->comments, properties.carrier->comments);
  EXPECT_EQ(byItsOwnTool(picture), byItsOwnTool(file("a.jp2")));
}

TEST_F(Jpeg2000Writing, DensityIsToldExactly) {
  for (const double dots : {72.0, 300.0, 96.5, 1.0, 118.11, 70000.0, 0.25}) {
    Properties properties;
    properties.tree.emplace(kCGImagePropertyDPIWidth, dots);
    properties.tree.emplace(kCGImagePropertyDPIHeight, 2 * dots);
    const Bytes picture = encoded(kType, softRgb(), &properties);
    const Dictionary tree = propertiesOf(picture).tree;
    EXPECT_DOUBLE_EQ(*tree.at("DPIWidth").get<double>(), dots);
    EXPECT_DOUBLE_EQ(*tree.at("DPIHeight").get<double>(), 2 * dots);
    const double told = std::stod(toldByExiftool(picture, {"-DisplayXResolution"})) *
                        std::pow(10, std::stod(toldByExiftool(picture, {"-DisplayXResolutionUnit"})));
    EXPECT_NEAR(told * 0.0254, dots, dots * 1e-4);
  }
}

TEST_F(Jpeg2000Writing, ABlockThatIsNoneIsRefused) {
  Carrier carrier;
  carrier.exif = Bytes(40, 0xEE);
  const Properties properties{{}, std::make_shared<const Carrier>(std::move(carrier))};
  EXPECT_TRUE(isRefused(softRgb(), &properties));
  EXPECT_FALSE(isRefused(softRgb()));
}

}  // namespace
}  // namespace ostra
