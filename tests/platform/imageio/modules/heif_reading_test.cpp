#include <algorithm>

#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/modules/heif_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

class HeifReading : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"convert", "heif-enc", "heif-convert", "exiftool"}) OSTRA_NEEDS_PROGRAM(name);
  }

  /// A picture made by ImageMagick and coded by the format's own tool.
  Bytes made(const std::vector<std::string>& settings, const std::vector<std::string>& options = {},
             const std::string& size = "48x34") const {
    std::vector<std::string> source = {"convert", "-size",       "400x300",
                                       "-seed",   "3",           "plasma:tomato-steelblue",
                                       "-crop",   size + "+0+0", "+repage"};
    source.insert(source.end(), settings.begin(), settings.end());
    if (std::find(settings.begin(), settings.end(), "-depth") == settings.end())
      source.insert(source.end(), {"-depth", "8", "-define", "png:bit-depth=8"});
    source.push_back(folder.path("source.png"));
    run(source);
    return coded("source.png", options);
  }
  Bytes coded(const std::string& source, const std::vector<std::string>& options = {}) const {
    std::vector<std::string> words = {"heif-enc", folder.path(source), "-o", folder.path("a.heic")};
    words.insert(words.end(), options.begin(), options.end());
    run(words);
    return readFile(folder.path("a.heic"));
  }
  std::vector<std::uint16_t> byItsOwnTool() const {
    run({"heif-convert", folder.path("a.heic"), folder.path("decoded.png")});
    return rgba16ByImageMagick(folder.path("decoded.png"));
  }

  TemporaryFolder folder;
};

const std::vector<std::string> kTransparent = {"-alpha", "set", "-channel", "A", "-fx", "i/w"};

TEST_F(HeifReading, GivesThePixelsThatTheFormatsOwnToolReads) {
  for (const char* size : {"1x1", "1x7", "47x33", "64x64", "200x130"}) {
    const Bytes opaque = made({}, {"-q", "80"}, size);
    EXPECT_EQ(asRgba16(decoded(opaque)), byItsOwnTool()) << size;
    const Bytes transparent = made(kTransparent, {"-q", "80"}, size);
    EXPECT_EQ(asRgba16(decoded(transparent)), byItsOwnTool()) << size << " transparent";
  }
  const Bytes full = made({}, {"-q", "80", "-p", "chroma=444"});
  EXPECT_EQ(asRgba16(decoded(full)), byItsOwnTool()) << "full colour";
}

TEST_F(HeifReading, DeepPicturesBecome16BitsExactly) {
  for (const char* bits : {"10", "12"}) {
    const Bytes file = made({"-depth", "16"}, {"-b", bits, "-p", "chroma=444"});
    const Pixels pixels = decoded(file);
    EXPECT_EQ(pixels.layout.bitsPerComponent, 16);
    // The tool shifts where we scale: that makes up to the bits that are lacking.
    const int step = (1 << (16 - std::stoi(bits))) - 1;
    EXPECT_LE(largestDifference(asRgba16(pixels), byItsOwnTool()), step) << bits;
    EXPECT_EQ(propertiesOf(file).tree.at("Depth"), Value(std::stoi(bits)));
  }
}

TEST_F(HeifReading, GrayStaysGray) {
  // The odd size is put together of parts.
  for (const char* size : {"64x64", "47x33"}) {
    const Bytes file = made({"-colorspace", "gray"}, {"-q", "90"}, size);
    const Pixels pixels = decoded(file);
    EXPECT_EQ(pixels.layout.model, CGColorSpaceModel::monochrome);
    EXPECT_EQ(pixels.layout.bitsPerPixel, 8);
    EXPECT_EQ(propertiesOf(file).tree.at("ColorModel"), Value("Gray"));
    EXPECT_LE(largestDifference(asRgba16(pixels), byItsOwnTool()), 257) << size;
  }
}

TEST_F(HeifReading, TellsSizeDepthAndTransparency) {
  const Dictionary tree = propertiesOf(made(kTransparent, {}, "47x33")).tree;
  EXPECT_EQ(tree.at("PixelWidth"), Value(47));
  EXPECT_EQ(tree.at("PixelHeight"), Value(33));
  EXPECT_EQ(tree.at("Depth"), Value(8));
  EXPECT_EQ(tree.at("ColorModel"), Value("RGB"));
  EXPECT_EQ(tree.at("HasAlpha"), Value(true));
  EXPECT_EQ(propertiesOf(made({})).tree.count("HasAlpha"), 0u);
}

TEST_F(HeifReading, PremultipliedAlphaIsTakenAsSuch) {
  const Pixels pixels = decoded(made(kTransparent, {"--premultiplied-alpha"}));
  EXPECT_EQ(pixels.layout.bitmapInfo & kCGBitmapAlphaInfoMask,
            static_cast<CGBitmapInfo>(CGImageAlphaInfo::premultipliedLast));
}

TEST_F(HeifReading, CarriesProfileExifAndXmpAlsoOfAnOddSize) {
  for (const char* size : {"47x33", "64x64"}) {
    const CGColorSpaceRef p3 = CGColorSpace::createWithName(kCGColorSpaceDisplayP3);
    writeFile(folder.path("p3.icc"), p3->iccData());
    run({"convert", "-size", size, "plasma:tomato-steelblue", folder.path("b.jpg")});
    run({"exiftool", "-q", "-overwrite_original", "-Make=N", "-XMP-dc:Title=T",
         "-icc_profile<=" + folder.path("p3.icc"), folder.path("b.jpg")});
    const Bytes file = coded("b.jpg");
    EXPECT_TRUE(std::holds_alternative<IccProfile>(decoded(file).profile));
    const Properties properties = propertiesOf(file);
    EXPECT_EQ(properties.tree.at("ProfileName"), Value("Display P3"));
    ASSERT_NE(properties.carrier, nullptr) << size;
    EXPECT_FALSE(properties.carrier->exif.empty()) << size;
    EXPECT_FALSE(properties.carrier->xmp.empty()) << size;
    EXPECT_EQ(properties.tree.count("Orientation"), 0u);
  }
}

TEST_F(HeifReading, ThePropertiesTurnThePictureAndExifDoesNot) {
  made({});
  run({"exiftool", "-q", "-overwrite_original", "-Orientation#=6", "-Make=N", folder.path("a.heic")});
  const Bytes file = readFile(folder.path("a.heic"));
  EXPECT_EQ(propertiesOf(file).tree.at("Orientation"), Value(1));
  const Bytes turned = withHeifProperty(file, "irot", {2});
  EXPECT_EQ(propertiesOf(turned).tree.at("Orientation"), Value(3));
  EXPECT_EQ(asRgba16(decoded(turned)), asRgba16(decoded(file)));  // as they are stored
}

TEST_F(HeifReading, APictureIsCroppedAsItsToolCropsIt) {
  const Bytes whole = made({}, {}, "64x48");
  for (const Bytes& part :
       {cleanAperture(40, 20, 4, -6), cleanAperture(64, 48, 0, 0), cleanAperture(2, 2, -31, 23)}) {
    const Bytes file = withHeifProperty(whole, "clap", part);
    writeFile(folder.path("a.heic"), file);
    EXPECT_EQ(asRgba16(decoded(file)), byItsOwnTool());
  }
  EXPECT_TRUE(faultOf(decodeBytes(withHeifProperty(whole, "clap", cleanAperture(40, 20, 30, 0)))));
}

TEST_F(HeifReading, PicturesCountAndTheirThumbnailsDoNot) {
  const auto count = [](const Bytes& file) {
    return std::get<std::unique_ptr<Reader>>(openBytes(file))->opened().count;
  };
  EXPECT_EQ(count(made(kTransparent, {"-t", "20"})), 1u);
  run({"convert", "-size", "20x10", "xc:red", folder.path("red.png")});
  EXPECT_EQ(count(made({}, {folder.path("red.png")})), 2u);
}

TEST_F(HeifReading, ClaimsBeyondTheLimitsAreFaultsOfTheDecodingAlone) {
  const Bytes file = made({}, {}, "64x64");
  Limits limits;
  limits.pixels = 64 * 64 - 1;
  EXPECT_EQ(faultOf(decodeBytes(file, limits)), (Fault{FaultKind::limit, LimitName::pixels}));
  const Bytes huge = withBytesAt(file, "ispe", 8, {0, 0, 0xFF, 0xFF, 0, 0, 0xFF, 0xFF});
  EXPECT_EQ(faultOf(decodeBytes(huge)), (Fault{FaultKind::limit, LimitName::pixels}));
  const Bytes other = withBytesAt(file, "ispe", 8, {0, 0, 0, 80, 0, 0, 0, 80});
  EXPECT_EQ(faultOf(decodeBytes(other)), Fault{FaultKind::damaged});
}

// What puts the parts together would take memory for the size in the content.
TEST_F(HeifReading, AGridOfAnotherSizeThanItsPropertiesSayIsRefused) {
  const Bytes whole = made({}, {}, "47x33");
  ASSERT_FALSE(faultOf(decodeBytes(whole)));
  // One row and column; the size as numbers of 16 bits.
  const Bytes grid = {0, 0, 0, 0, 0, 47, 0, 33};
  const auto at = std::search(whole.begin(), whole.end(), grid.begin(), grid.end());
  ASSERT_NE(at, whole.end()) << "the picture is no grid";
  Bytes huge = whole;
  std::fill_n(huge.begin() + (at - whole.begin()) + 4, 4, std::uint8_t{0xFF});
  EXPECT_EQ(faultOf(decodeBytes(huge)), Fault{FaultKind::damaged});
}

TEST_F(HeifReading, OneThatIsCutOffAnywhereIsRefused) {
  for (const std::vector<std::string>& settings : {std::vector<std::string>{}, kTransparent}) {
    made(settings, {}, "47x33");
    run({"exiftool", "-q", "-overwrite_original", "-Make=N", "-XMP-dc:Title=T", folder.path("a.heic")});
    const Bytes whole = readFile(folder.path("a.heic"));
    ASSERT_FALSE(faultOf(decodeBytes(whole)));
    for (std::size_t size = 0; size < whole.size(); ++size)
      ASSERT_TRUE(std::holds_alternative<Fault>(openBytes(ByteView(whole).first(size))))
          << size << " of " << whole.size();
  }
}

// The library's own decoder gives all of these, gray or garbled from the damage on.
TEST_F(HeifReading, MostDamageToTheCodedPictureIsSeen) {
  const Bytes whole = made({"-attenuate", "0.2", "+noise", "gaussian"}, {"-q", "80"}, "320x240");
  const auto pixels = asRgba16(decoded(whole));
  const Bytes positions = randomBytes(600, 11);
  const std::size_t from = whole.size() / 4;
  int refused = 0, changed = 0;
  for (std::size_t i = 0; i < 150; ++i) {
    Bytes damaged = whole;
    const std::size_t at =
        positions[4 * i] | std::size_t{positions[4 * i + 1]} << 8 | std::size_t{positions[4 * i + 2]} << 16;
    damaged[from + at % (whole.size() - from)] ^= static_cast<std::uint8_t>(1u << positions[4 * i + 3] % 8);
    const auto answer = decodeBytes(damaged);
    if (faultOf(answer)) {
      ++refused;
    } else if (asRgba16(std::get<Pixels>(answer)) != pixels) {
      ++changed;
    }
  }
  EXPECT_GE(refused, 100);
  EXPECT_LE(changed, 30);
}

TEST_F(HeifReading, ASliceThatLacksItsEndIsRefused) {
  const Bytes whole =
      made({"-attenuate", "0.2", "+noise", "gaussian"}, {"-q", "80", "-p", "x265:wpp=0"}, "320x240");
  Bytes zeroed = whole;
  std::fill(zeroed.begin() + static_cast<std::ptrdiff_t>(zeroed.size() / 2), zeroed.end(), std::uint8_t{0});
  EXPECT_EQ(faultOf(decodeBytes(zeroed)), Fault{FaultKind::damaged});
}

}  // namespace
}  // namespace ostra::test
