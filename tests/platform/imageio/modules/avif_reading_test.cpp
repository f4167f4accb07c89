#include <algorithm>

#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/modules/heif_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

class AvifReading : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"convert", "avifenc", "avifdec", "exiftool"}) OSTRA_NEEDS_PROGRAM(name);
  }

  void makeSource(const std::vector<std::string>& settings, const std::string& size = "47x33") const {
    std::vector<std::string> source = {"convert", "-size",       "400x300",
                                       "-seed",   "3",           "plasma:tomato-steelblue",
                                       "-crop",   size + "+0+0", "+repage"};
    source.insert(source.end(), settings.begin(), settings.end());
    if (std::find(settings.begin(), settings.end(), "-depth") == settings.end())
      source.insert(source.end(), {"-depth", "8", "-define", "png:bit-depth=8"});
    source.push_back(folder.path("source.png"));
    run(source);
  }
  Bytes coded(std::vector<std::string> options, const std::string& source = "source.png") const {
    options.insert(options.begin(), {"avifenc", "-s", "9", "-j", "1"});
    options.insert(options.end(), {folder.path(source), folder.path("a.avif")});
    run(options);
    return readFile(folder.path("a.avif"));
  }
  Bytes made(const std::vector<std::string>& settings, const std::vector<std::string>& options,
             const std::string& size = "47x33") const {
    makeSource(settings, size);
    return coded(options);
  }
  std::vector<std::uint16_t> byItsOwnTool(const char* depth = "8") const {
    run({"avifdec", "-j", "1", "-d", depth, folder.path("a.avif"), folder.path("decoded.png")});
    return rgba16ByImageMagick(folder.path("decoded.png"));
  }
  std::vector<std::uint16_t> pixelsOfSource() const { return rgba16ByImageMagick(folder.path("source.png")); }

  TemporaryFolder folder;
};

const std::vector<std::string> kTransparent = {"-alpha", "set", "-channel", "A", "-fx", "i/w"};

TEST_F(AvifReading, WhatWasStoredWithoutLossIsExact) {
  for (const char* size : {"1x1", "1x7", "47x33", "130x70"}) {
    for (const auto& settings : {std::vector<std::string>{}, kTransparent}) {
      const Bytes file = made(settings, {"--lossless"}, size);
      EXPECT_EQ(asRgba16(decoded(file)), pixelsOfSource()) << size;
    }
  }
}

TEST_F(AvifReading, DeepPicturesBecome16BitsExactly) {
  for (const char* bits : {"10", "12"}) {
    const Bytes file = made({"-depth", "16"}, {"--lossless", "-d", bits});
    const Pixels pixels = decoded(file);
    EXPECT_EQ(pixels.layout.bitsPerComponent, 16);
    EXPECT_LE(largestDifference(asRgba16(pixels), byItsOwnTool("16")), 1);
    EXPECT_EQ(propertiesOf(file).tree.at("Depth"), Value(std::stoi(bits)));
  }
}

TEST_F(AvifReading, LossyPicturesAreNearThoseOfTheFormatsOwnTool) {
  for (const char* chroma : {"420", "422", "444"}) {
    for (const char* range : {"full", "limited"}) {
      const Bytes file =
          made(kTransparent, {"--min", "10", "--max", "10", "-y", chroma, "-r", range}, "130x70");
      EXPECT_GT(peakSignalToNoise(asRgba16(decoded(file)), byItsOwnTool()), 48) << chroma << range;
    }
  }
}

TEST_F(AvifReading, GrayStaysGray) {
  for (const char* range : {"full", "limited"}) {
    const Bytes file = made({"-colorspace", "gray"}, {"--min", "0", "--max", "0", "-y", "400", "-r", range});
    const Pixels pixels = decoded(file);
    EXPECT_EQ(pixels.layout.model, CGColorSpaceModel::monochrome);
    EXPECT_EQ(pixels.layout.bitsPerPixel, 8);
    EXPECT_LE(largestDifference(asRgba16(pixels), pixelsOfSource()), 257) << range;
  }
}

TEST_F(AvifReading, PremultipliedAlphaIsTakenAsSuch) {
  const Pixels pixels = decoded(made(kTransparent, {"--premultiply"}));
  EXPECT_EQ(pixels.layout.bitmapInfo & kCGBitmapAlphaInfoMask,
            static_cast<CGBitmapInfo>(CGImageAlphaInfo::premultipliedLast));
}

TEST_F(AvifReading, AGridIsOnePicture) {
  const Bytes file = made({}, {"--grid", "2x2", "--lossless"}, "256x160");
  EXPECT_EQ(std::get<std::unique_ptr<Reader>>(openBytes(file))->opened().count, 1u);
  EXPECT_EQ(asRgba16(decoded(file)), pixelsOfSource());
}

TEST_F(AvifReading, ThePropertiesTurnThePictureAndExifDoesNot) {
  const Bytes turned = made({}, {"--lossless", "--irot", "1", "--imir", "0"});
  EXPECT_EQ(propertiesOf(turned).tree.at("Orientation"), Value(5));
  EXPECT_EQ(asRgba16(decoded(turned)), pixelsOfSource());  // as they are stored
  made({}, {"--lossless"});
  run({"exiftool", "-q", "-overwrite_original", "-Orientation#=6", "-Make=N", folder.path("a.avif")});
  EXPECT_EQ(propertiesOf(readFile(folder.path("a.avif"))).tree.at("Orientation"), Value(1));
}

TEST_F(AvifReading, APictureIsCropped) {
  const Bytes file = made({}, {"--lossless", "--crop", "4,6,20,10"}, "48x34");
  const Dictionary tree = propertiesOf(file).tree;
  EXPECT_EQ(tree.at("PixelWidth"), Value(20));
  EXPECT_EQ(tree.at("PixelHeight"), Value(10));
  run({"convert", folder.path("source.png"), "-crop", "20x10+4+6", "+repage", folder.path("part.png")});
  EXPECT_EQ(asRgba16(decoded(file)), rgba16ByImageMagick(folder.path("part.png")));
}

TEST_F(AvifReading, TheColoursAreThoseOfTheProfileOrTheNumbers) {
  const auto nameOf = [](const ProfileRecord& profile) {
    const auto* space = std::get_if<NamedSpace>(&profile);
    return space == nullptr ? std::string("none") : space->name;
  };
  EXPECT_EQ(nameOf(decoded(made({}, {"--cicp", "12/13/6"})).profile), kCGColorSpaceDisplayP3);
  EXPECT_EQ(nameOf(decoded(made({}, {"--cicp", "9/1/9"})).profile), kCGColorSpaceITUR_2020);
  EXPECT_EQ(nameOf(decoded(made({}, {"--cicp", "2/2/6"})).profile), "none");
  EXPECT_EQ(propertiesOf(made({}, {"--cicp", "9/16/9"})).tree.at("ProfileName"),
            Value("Rec. ITU-R BT.2100 PQ"));
  const CGColorSpaceRef adobe = CGColorSpace::createWithName(kCGColorSpaceAdobeRGB1998);
  writeFile(folder.path("a.icc"), adobe->iccData());
  const Bytes file = made({}, {"--icc", folder.path("a.icc")});
  EXPECT_TRUE(std::holds_alternative<IccProfile>(decoded(file).profile));
  EXPECT_EQ(propertiesOf(file).tree.at("ProfileName"), Value("Adobe RGB (1998)"));
}

TEST_F(AvifReading, CarriesExifAndXmp) {
  run({"convert", "-size", "47x33", "plasma:tomato-steelblue", folder.path("b.jpg")});
  run({"exiftool", "-q", "-overwrite_original", "-Make=N", "-XMP-dc:Title=T", folder.path("b.jpg")});
  const Properties properties = propertiesOf(coded({}, "b.jpg"));
  ASSERT_NE(properties.carrier, nullptr);
  EXPECT_EQ(properties.tree.at("{TIFF}").get<Dictionary>()->at("Make"), Value("N"));
  EXPECT_FALSE(properties.carrier->xmp.empty());
}

TEST_F(AvifReading, DamagedExifIsLeftOutAndThePictureStays) {
  run({"convert", "-size", "47x33", "plasma:tomato-steelblue", folder.path("b.jpg")});
  run({"exiftool", "-q", "-overwrite_original", "-Make=N", folder.path("b.jpg")});
  const Bytes file = coded({}, "b.jpg");
  const std::size_t at = positionOf(std::string_view("MM\0*", 4), file);
  ASSERT_LT(at, file.size());
  Bytes damaged = file;
  damaged[at - 4] = 0x7F;  // a block that would begin far behind the file
  EXPECT_EQ(asRgba16(decoded(damaged)), asRgba16(decoded(file)));
  EXPECT_EQ(propertiesOf(damaged).tree.count("{TIFF}"), 0u);
}

TEST_F(AvifReading, ASequenceIsCountedAndItsFirstPictureDecoded) {
  makeSource({});
  run({"convert", "-size", "47x33", "xc:red", folder.path("red.png")});
  const Bytes file = coded({"--lossless", folder.path("source.png"), folder.path("red.png")});
  auto opened = openBytes(file);
  EXPECT_EQ(std::get<std::unique_ptr<Reader>>(opened)->opened().type, "public.avis");
  EXPECT_EQ(std::get<std::unique_ptr<Reader>>(opened)->opened().count, 3u);
  EXPECT_EQ(asRgba16(decoded(file)), pixelsOfSource());
}

TEST_F(AvifReading, ClaimsBeyondTheLimitsAreFaultsOfTheDecodingAlone) {
  const Bytes file = made({}, {});
  Limits limits;
  limits.pixels = 47 * 33 - 1;
  EXPECT_EQ(faultOf(decodeBytes(file, limits)), (Fault{FaultKind::limit, LimitName::pixels}));
  const Bytes huge = withBytesAt(file, "ispe", 8, {0, 0, 0xFF, 0xFF, 0, 0, 0xFF, 0xFF});
  EXPECT_EQ(faultOf(decodeBytes(huge)), (Fault{FaultKind::limit, LimitName::pixels}));
}

TEST_F(AvifReading, OneThatIsCutOffAnywhereIsRefused) {
  for (const std::vector<std::string>& settings : {std::vector<std::string>{}, kTransparent}) {
    made(settings, {});
    run({"exiftool", "-q", "-overwrite_original", "-Make=N", "-XMP-dc:Title=T", folder.path("a.avif")});
    const Bytes whole = readFile(folder.path("a.avif"));
    ASSERT_FALSE(faultOf(decodeBytes(whole)));
    for (std::size_t size = 0; size < whole.size(); ++size)
      ASSERT_TRUE(std::holds_alternative<Fault>(openBytes(ByteView(whole).first(size))))
          << size << " of " << whole.size();
  }
}

// Faster decoders give a garbled picture for nearly all of these.
TEST_F(AvifReading, DamageToTheCodedPictureIsSeen) {
  const Bytes whole =
      made({"-attenuate", "0.2", "+noise", "gaussian"}, {"--min", "10", "--max", "10"}, "320x240");
  const auto pixels = asRgba16(decoded(whole));
  const std::size_t from = positionOf("mdat", whole) + 24;
  int refused = 0, changed = 0;
  for (std::size_t i = 0; i < 150; ++i) {
    Bytes damaged = whole;
    damaged[from + i * 7919 % (whole.size() - from)] ^= static_cast<std::uint8_t>(1u << i % 8);
    const auto answer = decodeBytes(damaged);
    if (faultOf(answer)) {
      ++refused;
    } else if (asRgba16(std::get<Pixels>(answer)) != pixels) {
      ++changed;
    }
  }
  EXPECT_GE(refused, 145);
  EXPECT_LE(changed, 3);
}

TEST_F(AvifReading, AFlippedBitNeverCrashes) {
  const Bytes whole = made(kTransparent, {});
  std::size_t refused = 0;
  for (std::size_t i = 0; i < 400; ++i) {
    Bytes flipped = whole;
    flipped[i * 7919 % flipped.size()] ^= static_cast<std::uint8_t>(1u << i % 8);
    Limits limits;
    limits.pixels = 4'000'000;
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

}  // namespace
}  // namespace ostra::test
