#include <bit>
#include <cmath>
#include <tuple>

#include <gtest/gtest.h>
#include <tiffio.h>

#include "platform/imageio/codec.h"
#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/modules/tiff_files.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

using Words = std::vector<std::string>;
using Samples = std::vector<std::uint16_t>;

constexpr std::uint16_t kWhiteIsZero = 0, kBlackIsZero = 1, kRgb = 2, kPalette = 3, kInk = 5, kYcc = 6,
                        kCieLab = 8, kIccLab = 9;
constexpr std::uint16_t kPremultiplied = 1, kStraight = 2;

std::uint16_t scaled(long double value, long double most) {
  return static_cast<std::uint16_t>(std::floor(value * 65535 / most + 0.5L));
}

// What ImageMagick and the library's own tools make.

class TiffByTools : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"convert", "tiffcp", "tiffset"}) OSTRA_NEEDS_PROGRAM(name);
  }
  std::string path(const std::string& name) const { return folder.path(name); }
  Bytes made(Words options, const std::string& size = "47x33") const {
    options.insert(options.begin(), {"convert", "-size", size, "-seed", "3", "plasma:tomato-steelblue"});
    options.push_back(path("a.tif"));
    run(options);
    return readFile(path("a.tif"));
  }
  Bytes copied(Words options) const {
    options.insert(options.begin(), "tiffcp");
    options.insert(options.end(), {path("a.tif"), path("b.tif")});
    run(options);
    return readFile(path("b.tif"));
  }
  TemporaryFolder folder;
};

class TiffKinds : public TiffByTools, public testing::WithParamInterface<std::tuple<Words, Words>> {};

TEST_P(TiffKinds, ReadAsImageMagickReadsThem) {
  Words options = std::get<0>(GetParam());
  const Words compression = std::get<1>(GetParam());
  options.insert(options.end(), compression.begin(), compression.end());
  const Bytes file = made(options);
  EXPECT_EQ(straightRgba16(decoded(file)), rgba16ByImageMagick(path("a.tif")));
}

const Words kOpaque8 = {"-depth", "8"}, kOpaque16 = {"-depth", "16"},
            kGray8 = {"-colorspace", "gray", "-depth", "8"},
            kGray16 = {"-colorspace", "gray", "-depth", "16"},
            kAlpha8 = {"-alpha", "set",    "-channel", "A",       "-fx",
                       "i/w",    "-depth", "8",        "-define", "tiff:alpha=unassociated"},
            kAlpha16 = {"-alpha", "set",    "-channel", "A",       "-fx",
                        "i/w",    "-depth", "16",       "-define", "tiff:alpha=unassociated"},
            kGrayAlpha = {"-colorspace", "gray", "-alpha", "set", "-channel", "A",
                          "-fx",         "i/w",  "-depth", "8",   "-define",  "tiff:alpha=unassociated"},
            kEntries = {"-colors", "200", "-type", "palette", "-depth", "8"},
            kFewEntries = {"-colors", "7", "-type", "palette"};

INSTANTIATE_TEST_SUITE_P(
    Deep, TiffKinds,
    testing::Combine(testing::Values(kOpaque8, kOpaque16, kGray8, kGray16, kAlpha8, kAlpha16, kGrayAlpha,
                                     kEntries, kFewEntries),
                     testing::Values(Words{"-compress", "None"}, Words{"-compress", "LZW"},
                                     Words{"-compress", "Zip"}, Words{"-compress", "RLE"},
                                     Words{"-compress", "LZMA"}, Words{"-compress", "None", "-endian", "MSB"},
                                     Words{"-compress", "None", "-interlace", "plane"})));
INSTANTIATE_TEST_SUITE_P(
    Bilevel, TiffKinds,
    testing::Combine(testing::Values(Words{"-monochrome"}),
                     testing::Values(Words{"-compress", "None"}, Words{"-compress", "Group4"},
                                     Words{"-compress", "Fax"}, Words{"-compress", "LZW"})));

class TiffLayouts : public TiffByTools, public testing::WithParamInterface<std::tuple<Words, Words>> {};

TEST_P(TiffLayouts, HoldTheSamePixels) {
  const Samples expected = straightRgba16(decoded(made(std::get<0>(GetParam()))));
  EXPECT_EQ(straightRgba16(decoded(copied(std::get<1>(GetParam())))), expected);
}

INSTANTIATE_TEST_SUITE_P(
    All, TiffLayouts,
    testing::Combine(testing::Values(kOpaque8, kOpaque16, kGray16, kAlpha8),
                     testing::Values(Words{"-c", "none", "-r", "7"}, Words{"-c", "lzw:2", "-r", "1"},
                                     Words{"-c", "zip:2"}, Words{"-c", "zip:2", "-B"}, Words{"-c", "lzma"},
                                     Words{"-c", "zstd:2"}, Words{"-c", "lerc"}, Words{"-c", "packbits"},
                                     Words{"-c", "none", "-t", "-w", "16", "-l", "32"},
                                     Words{"-c", "none", "-8"}, Words{"-c", "zip:2", "-8", "-B", "-t"},
                                     Words{"-c", "none", "-f", "lsb2msb"})));

// The tool parts the planes of bytes only.
INSTANTIATE_TEST_SUITE_P(
    InPlanes, TiffLayouts,
    testing::Combine(testing::Values(kOpaque8, kAlpha8),
                     testing::Values(Words{"-c", "zip:2", "-t", "-w", "32", "-l", "16", "-p", "separate"},
                                     Words{"-c", "lzw:2", "-p", "separate", "-r", "5"})));

TEST_F(TiffByTools, OfStripsThatAreLargeAreReadByTheRow) {
  made({"-depth", "16"}, "2000x1500");  // 18 MB
  const Samples expected = rgba16ByImageMagick(path("a.tif"));
  for (const Words& packing : {Words{"-c", "none"}, Words{"-c", "zip:2"}, Words{"-c", "lzw"}}) {
    Words options = packing;
    options.insert(options.end(), {"-r", "1500"});
    EXPECT_TRUE(straightRgba16(decoded(copied(options))) == expected) << packing[1];
  }
}

TEST_F(TiffByTools, InJpegGiveRgb) {
  for (const char* sampling : {"4:4:4", "4:2:0"}) {
    const Bytes file =
        made({"-depth", "8", "-compress", "JPEG", "-quality", "95", "-sampling-factor", sampling}, "64x48");
    const Samples mine = straightRgba16(decoded(file)), theirs = rgba16ByImageMagick(path("a.tif"));
    ASSERT_EQ(mine.size(), theirs.size());
    for (std::size_t i = 0; i < mine.size(); ++i) ASSERT_NEAR(mine[i], theirs[i], 3 * 257) << i;
  }
}

TEST_F(TiffByTools, InWebpAreRead) {
  made({"-depth", "8"});
  run({"tiffcp", "-c", "webp:100", path("a.tif"), path("b.tif")});
  EXPECT_EQ(straightRgba16(decoded(readFile(path("b.tif")))), rgba16ByImageMagick(path("b.tif")));
}

TEST_F(TiffByTools, TellWhatTheyAre) {
  const Dictionary tree = propertiesOf(made({"-depth", "16", "-alpha", "set", "-compress", "LZW", "-density",
                                             "300", "-units", "PixelsPerInch"}))
                              .tree;
  EXPECT_EQ(tree.at("PixelWidth"), Value(47));
  EXPECT_EQ(tree.at("PixelHeight"), Value(33));
  EXPECT_EQ(tree.at("Depth"), Value(16));
  EXPECT_EQ(tree.at("ColorModel"), Value("RGB"));
  EXPECT_EQ(tree.at("HasAlpha"), Value(true));
  EXPECT_EQ(tree.at("DPIWidth"), Value(300.0));
  EXPECT_EQ(tree.at("{TIFF}").get<Dictionary>()->at("Compression"), Value(5));
}

TEST_F(TiffByTools, CarryTheirProfileAndTheirBlocks) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  const CGColorSpaceRef p3 = CGColorSpace::createWithName(kCGColorSpaceDisplayP3);
  writeFile(path("p3.icc"), p3->iccData());
  made(kOpaque8);
  run({"exiftool", "-q", "-overwrite_original", "-Make=N", "-Orientation#=6", "-ExposureTime=1/60",
       "-XMP-dc:Title=T", "-IPTC:Headline=H", "-GPSLatitude=1.5", "-GPSLatitudeRef=N",
       "-icc_profile<=" + path("p3.icc"), path("a.tif")});
  for (const Words& packing : {Words{"-B"}, Words{"-L"}}) {
    // The tool drops Exif; its own writing keeps the order.
    copied(packing);
    run({"exiftool", "-q", "-overwrite_original", "-tagsfromfile", path("a.tif"), "-all:all", "-icc_profile",
         path("b.tif")});
    const Bytes file = readFile(path("b.tif"));
    EXPECT_TRUE(std::holds_alternative<IccProfile>(decoded(file).profile));
    const Properties properties = propertiesOf(file);
    EXPECT_EQ(properties.tree.at("Orientation"), Value(6));
    EXPECT_EQ(properties.tree.at("ProfileName"), Value("Display P3"));
    EXPECT_EQ(properties.tree.at("{TIFF}").get<Dictionary>()->at("Make"), Value("N"));
    EXPECT_EQ(properties.tree.at("{Exif}").get<Dictionary>()->at("ExposureTime"), Value(1.0 / 60));
    EXPECT_EQ(properties.tree.at("{GPS}").get<Dictionary>()->at("Latitude"), Value(1.5));
    EXPECT_EQ(properties.tree.at("{IPTC}").get<Dictionary>()->at("Headline"), Value("H"));
    EXPECT_FALSE(properties.carrier->xmp.empty());
  }
}

// By the byte.

class TiffDepths : public testing::TestWithParam<std::tuple<int, bool>> {};

TEST_P(TiffDepths, AreScaledExactlyFromNothingToFull) {
  const auto bits = static_cast<unsigned>(std::get<0>(GetParam()));
  const bool bigEndian = std::get<1>(GetParam());
  const TiffBuilder builder(bigEndian);
  const std::uint64_t most = bits == 64 ? UINT64_MAX : (std::uint64_t{1} << bits) - 1;
  const std::vector<std::uint64_t> numbers = {0, most, most / 2, most / 3, most / 7 * 5, 1 & most, most - 1};
  Bytes packed = packedBits(numbers, bits, numbers.size());
  if (!bigEndian && bits % 8 == 0 && (bits == 24 || std::has_single_bit(bits))) {
    packed.clear();
    for (const std::uint64_t number : numbers) packed = joined({packed, builder.number(number, bits / 8)});
  }
  Samples expected;
  for (const std::uint64_t number : numbers) {
    expected.push_back(scaled(number, most));
  }
  for (const std::uint16_t photometry : {kBlackIsZero, kWhiteIsZero}) {
    const Pixels pixels =
        decoded(builder.build({builder.picture(static_cast<std::uint32_t>(numbers.size()), 1,
                                               static_cast<std::uint16_t>(bits), 1, photometry, packed)}));
    EXPECT_EQ(pixels.layout.model, CGColorSpaceModel::monochrome);
    EXPECT_EQ(pixels.layout.bitsPerComponent, bits <= 8 ? 8 : 16);
    const Samples gray = grayOf(pixels);
    ASSERT_EQ(gray.size(), expected.size());
    for (std::size_t i = 0; i < gray.size(); ++i) {
      const int wanted = photometry == kBlackIsZero ? expected[i] : 65535 - expected[i];
      // Half a step of the eight bits that are kept.
      EXPECT_NEAR(gray[i], wanted, bits < 8 ? 129 : bits > 32 ? 1 : 0) << bits << " bits, " << numbers[i];
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, TiffDepths, testing::Combine(testing::Range(1, 65), testing::Bool()));

// Signed samples lie around the middle.
TEST(TiffReading, OfSignedSamplesStartsFromTheLowest) {
  const TiffBuilder builder;
  for (const unsigned bytes : {1u, 2u, 4u}) {
    Bytes packed;
    const std::int64_t most = (std::int64_t{1} << (8 * bytes - 1)) - 1;
    for (const std::int64_t number : {-most - 1, std::int64_t{-1}, std::int64_t{0}, most})
      packed = joined({packed, builder.number(static_cast<std::uint64_t>(number), bytes)});
    const auto picture =
        with(builder.picture(4, 1, static_cast<std::uint16_t>(8 * bytes), 1, kBlackIsZero, packed),
             builder.shorts(339, {2}));
    const Samples gray = grayOf(decoded(builder.build({picture})));
    EXPECT_EQ(gray[0], 0);
    EXPECT_NEAR(gray[1], 32767, bytes == 1 ? 128 : 1);
    EXPECT_NEAR(gray[2], 32768, bytes == 1 ? 128 : 1);
    EXPECT_EQ(gray[3], 65535);
  }
}

Bytes reals(const TiffBuilder& builder, const std::vector<double>& values, unsigned bits) {
  Bytes packed;
  for (const double value : values) {
    if (bits == 64) packed = joined({packed, builder.number(std::bit_cast<std::uint64_t>(value), 8)});
    if (bits == 32)
      packed = joined({packed, builder.number(std::bit_cast<std::uint32_t>(static_cast<float>(value)), 4)});
    if (bits != 16) continue;
    int exponent = 0;
    const double fraction = std::frexp(std::abs(value), &exponent);
    auto half = value == 0 || std::isnan(value) ? 0u
                                                : static_cast<unsigned>((exponent + 14) << 10) |
                                                      (static_cast<unsigned>(fraction * 2048) & 1023);
    if (std::isnan(value)) half = 0x7E00;
    packed = joined({packed, builder.number(half | (value < 0 ? 0x8000u : 0u), 2)});
  }
  return packed;
}

// IEC 61966-2-1.
double srgbCurve(double light) {
  return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

class TiffReals : public testing::TestWithParam<std::tuple<unsigned, bool>> {
 protected:
  unsigned bits() const { return std::get<0>(GetParam()); }
  TiffBuilder builder{std::get<1>(GetParam())};
  Bytes file(const std::vector<double>& values, std::uint16_t samples, std::uint16_t photometry,
             const std::vector<TiffBuilder::Entry>& more = {}) const {
    auto picture = with(builder.picture(static_cast<std::uint32_t>(values.size() / samples), 1,
                                        static_cast<std::uint16_t>(bits()), samples, photometry,
                                        reals(builder, values, bits())),
                        builder.shorts(339, std::vector<std::uint16_t>(samples, 3)));
    for (const auto& entry : more) picture = with(picture, entry);
    return builder.build({picture});
  }
};

TEST_P(TiffReals, AreLightThatIsGivenTheCurveOfTheSpaceThatTheyGet) {
  const std::vector<double> light = {0, 0.25, 0.5, 1, 7, -1, 0.001, NAN};
  const Pixels pixels = decoded(file(light, 1, kBlackIsZero));
  EXPECT_EQ(std::get<NamedSpace>(pixels.profile).name, kCGColorSpaceSRGB);
  const Samples gray = grayOf(pixels);
  for (std::size_t i = 0; i < light.size(); ++i) {
    const double clipped = light[i] > 0 ? std::min(light[i], 1.0) : 0;
    EXPECT_NEAR(gray[i], srgbCurve(clipped) * 65535, bits() == 16 ? 8 : 0.6) << light[i];
  }
}

TEST_P(TiffReals, UnderAProfileAreWhatItSays) {
  const ByteView profile = CGColorSpace::createWithName("kCGColorSpaceLinearSRGB") != nullptr
                               ? CGColorSpace::createWithName("kCGColorSpaceLinearSRGB")->iccData()
                               : CGColorSpace::createWithName(kCGColorSpaceDisplayP3)->iccData();
  const Pixels pixels = decoded(file({0, 0.25, 0.5}, 3, kRgb, {builder.bytes(34675, 7, profile)}));
  EXPECT_TRUE(std::holds_alternative<IccProfile>(pixels.profile));
  EXPECT_EQ(straightRgba16(pixels), (Samples{0, 16384, 32768, 65535}));
}

TEST_P(TiffReals, ThatArePremultipliedBecomeStraightBeforeTheyGetACurve) {
  const Pixels pixels =
      decoded(file({0.25, 0.125, 0, 0.5, 0, 0, 0, 0}, 4, kRgb, {builder.shorts(338, {kPremultiplied})}));
  const Samples samples = straightRgba16(pixels);
  EXPECT_NEAR(samples[0], srgbCurve(0.5) * 65535, 0.6);
  EXPECT_NEAR(samples[1], srgbCurve(0.25) * 65535, 0.6);
  EXPECT_EQ(samples[3], 32768);
  EXPECT_EQ(Samples(samples.begin() + 4, samples.end()), (Samples{0, 0, 0, 0}));
}

INSTANTIATE_TEST_SUITE_P(All, TiffReals, testing::Combine(testing::Values(16u, 32u, 64u), testing::Bool()));

TEST(TiffReading, PutsPremultipliedAlphaAsItIsAndSkipsFurtherSamples) {
  const TiffBuilder builder;
  const Bytes samples = {9, 50, 100, 25, 128, 77, 9, 0, 0, 0, 0, 77};
  // A sample that is nothing, then alpha, then another one.
  const Bytes pixels = {50, 100, 25, 9, 128, 77, 0, 0, 0, 9, 0, 77};
  const auto picture =
      with(builder.picture(2, 1, 8, 6, kRgb, pixels), builder.shorts(338, {0, kPremultiplied, 0}));
  const Pixels read = decoded(builder.build({picture}));
  EXPECT_EQ(read.layout.bitmapInfo, static_cast<CGBitmapInfo>(CGImageAlphaInfo::premultipliedLast));
  EXPECT_EQ(Bytes(read.bytes.view.begin(), read.bytes.view.end()), (Bytes{50, 100, 25, 128, 0, 0, 0, 0}));
  const auto straight = with(picture, builder.shorts(338, {kStraight, 0, 0}));
  const Pixels other = decoded(builder.build({straight}));
  EXPECT_EQ(other.layout.bitmapInfo, static_cast<CGBitmapInfo>(CGImageAlphaInfo::last));
  EXPECT_EQ(Bytes(other.bytes.view.begin(), other.bytes.view.end()), (Bytes{50, 100, 25, 9, 0, 0, 0, 9}));
}

TEST(TiffReading, OfSamplesOfUnknownMeaningTakesNoneForAlpha) {
  const TiffBuilder builder;
  const auto picture = builder.picture(1, 1, 8, 4, kRgb, {1, 2, 3, 4});
  for (const auto& directory : {picture, with(picture, builder.shorts(338, {0}))}) {
    const Pixels read = decoded(builder.build({directory}));
    EXPECT_EQ(read.layout.bitmapInfo, static_cast<CGBitmapInfo>(CGImageAlphaInfo::noneSkipLast));
    EXPECT_EQ(Bytes(read.bytes.view.begin(), read.bytes.view.end()), (Bytes{1, 2, 3, 255}));
  }
}

TEST(TiffReading, OfEntriesKnowsThePalettesThatAreWrittenInEightBits) {
  const TiffBuilder builder;
  const auto read = [&](std::uint16_t factor) {
    std::vector<std::uint16_t> map(12);
    for (std::uint16_t i = 0; i < 12; ++i) map[i] = static_cast<std::uint16_t>((20 * i) * factor);
    return decoded(
        builder.build({with(builder.picture(4, 1, 2, 1, kPalette, {0x1B}), builder.shorts(320, map))}));
  };
  for (const std::uint16_t factor : {std::uint16_t{1}, std::uint16_t{256}, std::uint16_t{257}}) {
    const Pixels pixels = read(factor);
    EXPECT_EQ(pixels.layout.bitsPerComponent, 8);
    EXPECT_EQ(Bytes(pixels.bytes.view.begin() + 4, pixels.bytes.view.begin() + 8), (Bytes{20, 100, 180, 255}))
        << factor;
  }
  EXPECT_EQ(read(200).layout.bitsPerComponent, 16);
  EXPECT_EQ(straightRgba16(read(200))[4], 4000);
}

TEST(TiffReading, OfEntriesReadsTheirAlpha) {
  const TiffBuilder builder;
  std::vector<std::uint16_t> map(48, 257);
  const auto picture =
      with(with(builder.picture(2, 1, 4, 2, kPalette, {0x1F, 0x27}), builder.shorts(320, map)),
           builder.shorts(338, {kStraight}));
  EXPECT_EQ(straightRgba16(decoded(builder.build({picture}))),
            (Samples{257, 257, 257, 65535, 257, 257, 257, 119 * 257}));
}

TEST(TiffReading, OfInkWithAlphaPutsItOnPaper) {
  const TiffBuilder builder;
  const auto picture = [&](std::uint16_t alpha) {
    const auto plain = builder.picture(1, 1, 8, 5, kInk, {200, 100, 0, 50, 51});
    return decoded(builder.build({with(plain, builder.shorts(338, {alpha}))}));
  };
  const Pixels straight = picture(kStraight), premultiplied = picture(kPremultiplied);
  EXPECT_EQ(straight.layout.model, CGColorSpaceModel::cmyk);
  EXPECT_EQ(straight.layout.bitsPerPixel, 32);
  EXPECT_EQ(Bytes(straight.bytes.view.begin(), straight.bytes.view.end()), (Bytes{40, 20, 0, 10}));
  EXPECT_EQ(Bytes(premultiplied.bytes.view.begin(), premultiplied.bytes.view.end()),
            (Bytes{200, 100, 0, 50}));
}

TEST(TiffReading, OfLabKnowsItsFourEncodings) {
  const TiffBuilder builder;
  // L 50, a -20, b 30.
  const Bytes byTiff8 = {128, static_cast<std::uint8_t>(-20), 30}, byProfiles8 = {128, 108, 158};
  const auto deep = [&](std::initializer_list<std::uint16_t> numbers) {
    Bytes bytes;
    for (const std::uint16_t number : numbers) bytes = joined({bytes, builder.number(number, 2)});
    return bytes;
  };
  const auto minus = static_cast<std::uint16_t>(-20 * 256);
  const Bytes byTiff16 = deep({32768, minus, 30 * 256}), byProfiles16 = deep({32640, 108 * 256, 158 * 256});
  const auto read = [&](std::uint16_t bits, std::uint16_t photometry, const Bytes& samples) {
    const Pixels pixels = decoded(builder.build({builder.picture(1, 1, bits, 3, photometry, samples)}));
    EXPECT_EQ(pixels.layout.bitsPerComponent, 16);
    EXPECT_EQ(std::get<NamedSpace>(pixels.profile).name, kCGColorSpaceROMMRGB);
    return straightRgba16(pixels);
  };
  // Of the formulas of CIE 1976 and the primaries of ISO 22028-2, calculated elsewhere.
  const Samples expected = {22149, 26899, 15373, 65535};
  const auto isNear = [&](const Samples& samples, int distance) {
    for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(samples[i], expected[i], distance) << i;
  };
  constexpr int kEightBitsOfLightness = 140;
  isNear(read(8, kCieLab, byTiff8), kEightBitsOfLightness);
  isNear(read(8, kIccLab, byProfiles8), kEightBitsOfLightness);
  isNear(read(16, kCieLab, byTiff16), 5);
  isNear(read(16, kIccLab, byProfiles16), 5);
}

TEST_F(TiffByTools, OfYccWithoutJpegAreConvertedByItsOwnNumbers) {
  const TiffBuilder builder;
  // Two by two pixels share their colour: four of Y, then both of it.
  const Bytes pixels = {100, 150, 200, 250, 90, 170};
  auto picture = with(builder.picture(2, 2, 8, 3, kYcc, pixels), builder.shorts(530, {2, 2}));
  const Samples samples = straightRgba16(decoded(builder.build({picture})));
  for (std::size_t i = 0; i < 4; ++i) {
    const double y = pixels[i], cb = 90 - 128, cr = 170 - 128;
    const double wanted[] = {y + 1.402 * cr, y - 0.344136 * cb - 0.714136 * cr, y + 1.772 * cb};
    for (std::size_t c = 0; c < 3; ++c)
      EXPECT_NEAR(samples[4 * i + c] / 257.0, std::clamp(wanted[c], 0.0, 255.0), 1.5) << i << ' ' << c;
  }
}

/// A file that the library writes of one row of samples.
Bytes byTheLibrary(const std::string& path, std::uint16_t compression, std::uint16_t photometry,
                   std::uint16_t bits, std::uint16_t samples, Bytes row) {
  TIFF* const tiff = TIFFOpen(path.c_str(), "w");
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometry);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits);
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(row.size() / samples / (bits / 8)));
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 1);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 1);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  if (bits == 32) {
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_IEEEFP);
    TIFFSetField(tiff, TIFFTAG_SGILOGDATAFMT, SGILOGDATAFMT_FLOAT);
  }
  const auto size = static_cast<tmsize_t>(row.size());
  EXPECT_EQ(TIFFWriteEncodedStrip(tiff, 0, row.data(), size), size);
  TIFFClose(tiff);
  return readFile(path);
}

TEST_F(TiffByTools, OfLogarithmicLightAreGivenTheCurveOfSrgb) {
  const TiffBuilder builder;
  // White of three strengths, too much of it, and red.
  const std::vector<double> xyz = {0, 0, 0, 0.25, 0.25, 0.25, 1, 1, 1, 4, 4, 4, 0.2974, 0.1537, 0.014};
  const Bytes colour =
      byTheLibrary(path("c.tif"), COMPRESSION_SGILOG, PHOTOMETRIC_LOGLUV, 32, 3, reals(builder, xyz, 32));
  const Pixels pixels = decoded(colour);
  EXPECT_EQ(std::get<NamedSpace>(pixels.profile).name, kCGColorSpaceSRGB);
  const Samples samples = straightRgba16(pixels);
  const double quarter = srgbCurve(0.25) * 65535;
  const std::vector<double> expected = {0,     0,     0,     quarter, quarter, quarter,
                                        65535, 65535, 65535, 65535,   65535,   65535};
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_NEAR(samples[i / 3 * 4 + i % 3], expected[i], 700) << i;  // it has steps of a third of a percent
  EXPECT_GT(samples[16], 50000);
  EXPECT_LT(samples[17], 9000);
  EXPECT_LT(samples[18], 9000);
  const Bytes gray = byTheLibrary(path("g.tif"), COMPRESSION_SGILOG, PHOTOMETRIC_LOGL, 32, 1,
                                  reals(builder, {0, 0.25, 1, 4}, 32));
  EXPECT_EQ(decoded(gray).layout.model, CGColorSpaceModel::monochrome);
  EXPECT_NEAR(grayOf(decoded(gray))[1], quarter, 300);
  EXPECT_EQ(grayOf(decoded(gray))[3], 65535);
}

TEST_F(TiffByTools, InTheLogarithmsOfFilmAreRead) {
  byTheLibrary(path("a.tif"), COMPRESSION_PIXARLOG, PHOTOMETRIC_RGB, 8, 3, {0, 50, 100, 150, 200, 255});
  const Samples mine = straightRgba16(decoded(readFile(path("a.tif"))));
  EXPECT_EQ(mine, rgba16ByImageMagick(path("a.tif")));
  EXPECT_NEAR(mine[4], 150 * 257, 3 * 257);
}

// What cameras of the nineties wrote: a whole JPEG beside the entries.
TEST_F(TiffByTools, OfOldJpegAreRead) {
  const TiffBuilder builder;
  const Bytes jpeg = madeByImageMagick({"-size", "48x32", "-seed", "3", "plasma:tomato-steelblue", "-quality",
                                        "95", "-sampling-factor", "4:4:4"},
                                       "jpg");
  auto picture = with(with(builder.picture(48, 32, 8, 3, kYcc, jpeg), builder.shorts(259, {6})),
                      builder.shorts(530, {1, 1}));
  for (const auto& entry :
       {builder.longs(513, {0}), builder.longs(514, {static_cast<std::uint32_t>(jpeg.size())})})
    picture = with(picture, entry);
  Bytes file = builder.build({picture});
  const auto at = static_cast<std::uint32_t>(file.size() - jpeg.size());
  picture = with(picture, builder.longs(513, {at}));
  file = builder.build({picture});
  writeFile(path("a.jpg"), jpeg);
  const Samples mine = straightRgba16(decoded(file)), theirs = rgba16ByImageMagick(path("a.jpg"));
  ASSERT_EQ(mine.size(), theirs.size());
  for (std::size_t i = 0; i < mine.size(); ++i) ASSERT_NEAR(mine[i], theirs[i], 4 * 257) << i;
}

// IPTC records are called words by many writers, of which some turn each.
TEST(TiffReading, FindsIptcRecordsHoweverTheyAreTyped) {
  const Bytes records = {0x1C, 2, 105, 0, 1, 'H', 0, 0};
  Bytes turned;
  for (std::size_t i = 0; i < records.size(); i += 4)
    turned.insert(turned.end(), {records[i + 3], records[i + 2], records[i + 1], records[i]});
  const TiffBuilder builder(true);
  const auto page = builder.picture(2, 1, 8, 1, kBlackIsZero, {10, 20});
  TiffBuilder::Entry words{33723, 4, 2, records}, turnedWords{33723, 4, 2, turned};
  for (const auto& entry : {builder.bytes(33723, 7, records), words, turnedWords}) {
    const Dictionary tree = propertiesOf(builder.build({with(page, entry)})).tree;
    ASSERT_TRUE(tree.contains("{IPTC}"));
    EXPECT_EQ(tree.at("{IPTC}").get<Dictionary>()->at("Headline"), Value("H"));
  }
}

}  // namespace
}  // namespace ostra::test
