#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/imageio/codec.h"
#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/modules/raw_files.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/process_tree.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

constexpr Fault kDamaged{FaultKind::damaged};
constexpr Fault kNotImage{FaultKind::notImage};

unsigned wave(unsigned x, unsigned y, unsigned colour) {
  return static_cast<unsigned>(
      std::lround(30000 + 20000 * std::sin(0.21 * x + 0.7 * colour) * std::cos(0.17 * y + 0.3 * colour)));
}

/// ROMM RGB (ISO 22028-2, as its profile says it), in 16 bits.
std::uint16_t romm(double light) {
  const double value = std::pow(light, 1 / 1.8);
  return static_cast<std::uint16_t>(std::lround(65535 * (value < 1.0 / 512 ? 16 * light : value)));
}

using Colour = std::array<std::uint16_t, 3>;
Colour colourAt(const Pixels& pixels, std::size_t x, std::size_t y) {
  const std::vector<std::uint16_t> all = asRgba16(pixels);
  Colour colour{};
  std::copy_n(all.begin() + static_cast<std::ptrdiff_t>(4 * (y * pixels.layout.width + x)), 3,
              colour.begin());
  return colour;
}

std::string typeOf(ByteView file) {
  auto opened = openBytes(file);
  const auto* const reader = std::get_if<std::unique_ptr<Reader>>(&opened);
  return reader == nullptr ? "" : (*reader)->opened().type;
}

std::optional<Fault> faultOfOpening(ByteView file) {
  const auto opened = openBytes(file);
  const auto* const fault = std::get_if<Fault>(&opened);
  return fault == nullptr ? std::nullopt : std::optional(*fault);
}

/// What the library's own program makes of the file: linear light of 16 bits in ROMM's primaries.
std::vector<std::uint16_t> byItsOwnProgram(const Bytes& file, const std::string& threshold = "0") {
  const TemporaryFolder folder;
  writeFile(folder.path("a.dng"), file);
  run({"dcraw_emu", "-w", "-t", "0", "-c", threshold, "-o", "4", "-4", folder.path("a.dng")});
  run({"convert", folder.path("a.dng.ppm"), "-depth", "16", "-endian", "LSB", "rgb:" + folder.path("raw")});
  const Bytes bytes = readFile(folder.path("raw"));
  std::vector<std::uint16_t> light(bytes.size() / 2);
  std::memcpy(light.data(), bytes.data(), bytes.size());
  return light;
}

std::vector<std::uint16_t> opaqueRomm(const std::vector<std::uint16_t>& light) {
  std::vector<std::uint16_t> result;
  for (std::size_t i = 0; i < light.size(); ++i) {
    result.push_back(romm(light[i] / 65535.0));
    if (i % 3 == 2) result.push_back(65535);
  }
  return result;
}

class Raw : public testing::Test {
 protected:
  // Read by the runtime when the module brings it.
  static void SetUpTestSuite() { setenv("OMP_NUM_THREADS", "4", 1); }
};

TEST_F(Raw, NeutralLightStaysThatInEveryMosaicOrderAndDepth) {
  for (const std::vector<std::uint8_t>& pattern :
       {std::vector<std::uint8_t>{0, 1, 1, 2}, {1, 0, 2, 1}, {1, 2, 0, 1}, {2, 1, 1, 0}, {}}) {
    for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
      for (const unsigned bits : {12U, 16U}) {
        DngParts parts;
        parts.pattern = pattern;
        parts.order = order;
        parts.bits = bits;
        parts.white = (1U << bits) - 1;
        parts.value = [&](unsigned, unsigned, unsigned) { return parts.white / 5 * 4; };
        const Pixels pixels = decoded(dngFile(parts));
        const std::uint16_t expected = romm(0.8);
        for (const auto& [x, y] : {std::pair(0, 0), {47, 33}, {20, 11}}) {
          const Colour colour = colourAt(pixels, static_cast<std::size_t>(x), static_cast<std::size_t>(y));
          for (const std::uint16_t value : colour) EXPECT_NEAR(value, expected, 2) << bits;
        }
      }
    }
  }
}

// Fujifilm's, in a DNG.
const std::vector<std::uint8_t> kSixBySix = {1, 1, 0, 1, 1, 2, 1, 1, 2, 1, 1, 0, 2, 0, 1, 0, 2, 1,
                                             1, 1, 2, 1, 1, 0, 1, 1, 0, 1, 1, 2, 0, 2, 1, 2, 0, 1};

TEST_F(Raw, AColourIsWhatWhiteBalanceAndMatrixSay) {
  DngParts parts;
  parts.neutral = {0.5, 1, 0.8};
  // A quarter, a half and an eighth of white, as the sensor sees them, above its black.
  const std::array<double, 3> light = {0.25, 0.5, 0.125};
  parts.black = 1000;
  parts.value = [&](unsigned, unsigned, unsigned c) {
    return static_cast<unsigned>(std::lround(1000 + 64535 * light[c] * parts.neutral[c]));
  };
  // From sRGB's primaries to those of ROMM.
  const double matrix[3][3] = {
      {0.52934, 0.33019, 0.14057}, {0.09835, 0.87339, 0.02815}, {0.01686, 0.11764, 0.86537}};
  for (const auto& pattern : {parts.pattern, kSixBySix}) {
    parts.pattern = pattern;
    // The least that the library takes of such a mosaic.
    if (pattern.size() == 36) parts.width = parts.height = 512;
    const Pixels pixels = decoded(dngFile(parts));
    const Colour colour = colourAt(pixels, 20, 15);
    for (std::size_t c = 0; c < 3; ++c) {
      double expected = 0;
      for (std::size_t k = 0; k < 3; ++k) expected += matrix[c][k] * light[k];
      // The library's numbers have five digits, its light 16 bits.
      EXPECT_NEAR(colour[c], romm(expected), 20) << pattern.size() << ' ' << c;
    }
    EXPECT_EQ(std::get<NamedSpace>(pixels.profile).name, kCGColorSpaceROMMRGB);
  }
}

TEST_F(Raw, PixelsAreThoseOfTheLibrarysOwnProgram) {
  OSTRA_NEEDS_PROGRAM("dcraw_emu");
  OSTRA_NEEDS_PROGRAM("convert");
  for (const std::vector<std::uint8_t>& pattern :
       {std::vector<std::uint8_t>{0, 1, 1, 2}, {1, 0, 2, 1}, {1, 2, 0, 1}, {2, 1, 1, 0}, {}}) {
    for (const auto& [width, height] : {std::pair(47U, 33U), {600U, 520U}}) {
      DngParts parts;
      parts.pattern = pattern;
      parts.width = width;
      parts.height = height;
      parts.value = wave;
      parts.neutral = {0.6, 1, 0.7};
      const Bytes file = dngFile(parts);
      EXPECT_TRUE(asRgba16(decoded(file)) == opaqueRomm(byItsOwnProgram(file))) << width;
    }
  }
}

TEST_F(Raw, BrightnessDoesNotDependOnTheBrightestPixelOfADng) {
  DngParts dark, bright;
  dark.value = [](unsigned x, unsigned y, unsigned) { return x + y == 0 ? 50000U : 20000U; };
  bright.value = [](unsigned x, unsigned y, unsigned) { return x + y == 0 ? 65535U : 20000U; };
  EXPECT_EQ(colourAt(decoded(dngFile(dark)), 30, 20), colourAt(decoded(dngFile(bright)), 30, 20));
}

TEST_F(Raw, AGraySensorGivesGray) {
  DngParts parts;
  parts.pattern = {0};
  parts.value = [](unsigned, unsigned, unsigned) { return 16384U; };
  const Pixels pixels = decoded(dngFile(parts));
  EXPECT_EQ(pixels.layout.model, CGColorSpaceModel::monochrome);
  EXPECT_EQ(pixels.layout.bitsPerPixel, 16);
  // sRGB's curve at a quarter.
  EXPECT_NEAR(colourAt(pixels, 3, 3)[0], std::round(65535 * (1.055 * std::pow(0.25, 1 / 2.4) - 0.055)), 2);
}

TEST_F(Raw, APictureIsNeverTurnedAndItsOrientationIsTold) {
  for (const unsigned orientation : {1U, 3U, 6U, 8U}) {
    DngParts parts;
    parts.orientation = orientation;
    const Bytes file = dngFile(parts);
    const Pixels pixels = decoded(file);
    EXPECT_EQ(pixels.layout.width, 48u);
    EXPECT_EQ(pixels.layout.height, 34u);
    auto opened = openBytes(file);
    EXPECT_EQ(std::get<std::unique_ptr<Reader>>(opened)->opened().width, 48u);
    EXPECT_EQ(std::get<std::unique_ptr<Reader>>(opened)->opened().height, 34u);
    EXPECT_EQ(propertiesOf(file).tree.at("Orientation"), Value(static_cast<int>(orientation)));
  }
}

TEST_F(Raw, ADngIsCutToTheAreaThatItTells) {
  DngParts parts;
  parts.value = [](unsigned x, unsigned y, unsigned) { return x < 8 || y < 4 ? 0U : 40000U; };
  parts.moreRaw = [](TiffParts& raw) {
    raw.longs(50719, {14, 8});
    raw.longs(50720, {30, 24});
  };
  const Pixels pixels = decoded(dngFile(parts));
  EXPECT_EQ(pixels.layout.width, 30u);
  EXPECT_EQ(pixels.layout.height, 24u);
  EXPECT_NEAR(colourAt(pixels, 0, 0)[0], romm(40000 / 65535.0), 2);
}

TEST_F(Raw, ThePreviewIsNeitherThePictureNorCounted) {
  DngParts parts;
  parts.hasPreview = true;
  const Bytes file = dngFile(parts);
  auto opened = openBytes(file);
  EXPECT_EQ(std::get<std::unique_ptr<Reader>>(opened)->opened().count, 1u);
  EXPECT_EQ(decoded(file).layout.width, 48u);
}

TEST_F(Raw, TellsTheTypeByWhatTheFileSays) {
  EXPECT_EQ(typeOf(dngFile({})), "com.adobe.raw-image");
  DngParts parts;
  parts.isDng = false;
  parts.hasPreview = true;
  const std::pair<const char*, const char*> makers[] = {{"NIKON CORPORATION", "com.nikon.raw-image"},
                                                        {"PENTAX Corporation", "com.pentax.raw-image"},
                                                        {"SEIKO EPSON CORP.", "com.epson.raw-image"},
                                                        {"Hasselblad", "com.hasselblad.3fr-raw-image"}};
  for (const auto& [make, type] : makers) {
    parts.make = make;
    EXPECT_EQ(typeOf(dngFile(parts)), type);
  }
}

TEST_F(Raw, EveryTypeOfTheTableIsReadByTheModule) {
  int rows = 0;
  for (const Codec& codec : allCodecs()) {
    if (codec.module != "raw") continue;
    ++rows;
    EXPECT_NE(functionsOf(codec), nullptr) << codec.type;
  }
  EXPECT_GT(rows, 20);
}

TEST_F(Raw, ATiffOfACamerasSoftwareIsNoRawFile) {
  for (const bool callsItselfDng : {false, true}) {
    TiffParts tiff(ByteOrder::little);
    tiff.longs(256, {40});
    tiff.longs(257, {30});
    tiff.shorts(258, {16, 16, 16});
    tiff.shorts(259, {1});
    tiff.shorts(262, {2});
    tiff.text(271, "NIKON CORPORATION");
    tiff.text(272, "NIKON D70");
    tiff.shorts(277, {3});
    tiff.longs(278, {30});
    if (callsItselfDng) tiff.bytes(50706, {1, 4, 0, 0});
    tiff.strips = {Bytes(40 * 30 * 6, 100)};
    const Codec& row = *codecForType("com.adobe.raw-image");
    const Bytes file = tiffFile({tiff});
    const auto opened = functionsOf(row)->open(file, {});
    ASSERT_NE(std::get_if<Fault>(&opened), nullptr);
    EXPECT_EQ(std::get<Fault>(opened), kNotImage);
  }
}

TEST_F(Raw, OneThatTheLibraryDoesNotKnowIsDamagedAndNotHandedOn) {
  DngParts parts;
  parts.moreRaw = [](TiffParts& raw) {
    for (auto& entry : raw.entries) {
      if (entry.tag == 259) entry.value[0] = 99;
    }
  };
  const Bytes file = dngFile(parts);
  const auto fault = faultOfOpening(file);
  EXPECT_TRUE(fault ? *fault == kDamaged : faultOf(decodeBytes(file)) == kDamaged);
}

TEST_F(Raw, CarriesExifGpsAndXmp) {
  DngParts parts;
  parts.hasPreview = true;
  parts.more = [&](TiffParts& first) {
    TiffParts exif(parts.order);
    exif.rationals(0x829A, {0.5});
    exif.shorts(0x8827, {400});
    exif.text(0x9003, "2024:05:06 07:08:09");
    exif.bytes(0x927C, bytesOfText("note of the maker"), kUndefined);
    first.below.push_back({0x8769, {exif}});
    TiffParts gps(parts.order);
    gps.text(1, "N");
    gps.rationals(2, {1, 30, 0});
    first.below.push_back({0x8825, {gps}});
    first.bytes(700, bytesOfText("<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
                                 "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'/></x:xmpmeta>"));
  };
  const Properties properties = propertiesOf(dngFile(parts));
  const Dictionary& exif = *properties.tree.at("{Exif}").get<Dictionary>();
  EXPECT_EQ(exif.at("ExposureTime"), Value(0.5));
  EXPECT_EQ(exif.at("ISOSpeedRatings"), Value(Array{Value(400)}));
  EXPECT_EQ(exif.at("DateTimeOriginal"), Value("2024:05:06 07:08:09"));
  EXPECT_EQ(properties.tree.at("{GPS}").get<Dictionary>()->at("Latitude"), Value(1.5));
  EXPECT_EQ(properties.tree.at("{TIFF}").get<Dictionary>()->at("Make"), Value("Ostra"));
  EXPECT_EQ(properties.tree.at("PixelWidth"), Value(48));
  EXPECT_NE(positionOf("note of the maker", properties.carrier->exif), properties.carrier->exif.size());
  EXPECT_FALSE(properties.carrier->xmp.empty());
  // What says how raw pixels are to be developed is told of no others.
  const auto block = parseExif(properties.carrier->exif);
  ASSERT_TRUE(block);
  constexpr std::array<std::uint16_t, 3> kDevelopment = {50706, 50721, 50728};
  for (const std::uint16_t tag : kDevelopment)
    EXPECT_EQ(block->find(IfdKind::tiff)->find(tag), nullptr) << tag;
}

TEST_F(Raw, OneThatIsCutOffAnywhereIsRefused) {
  for (const unsigned bits : {12U, 16U}) {
    for (const bool hasPreview : {false, true}) {
      DngParts parts;
      parts.bits = bits;
      parts.white = (1U << bits) - 1;
      parts.hasPreview = hasPreview;
      parts.value = [](unsigned x, unsigned, unsigned) { return 2 * x; };
      const Bytes whole = dngFile(parts);
      EXPECT_EQ(faultOf(decodeBytes(whole)), std::nullopt);
      for (std::size_t size = 0; size < whole.size(); size += size < 600 ? 1 : 23)
        EXPECT_TRUE(faultOf(decodeBytes(ByteView(whole).first(size)))) << size;
      EXPECT_TRUE(faultOf(decodeBytes(ByteView(whole).first(whole.size() - 1))));
    }
  }
}

TEST_F(Raw, LosslessCompressionChangesNothing) {
  DngParts parts;
  parts.value = wave;
  parts.neutral = {0.6, 1, 0.7};
  const Pixels plain = decoded(dngFile(parts));
  parts.isCompressed = true;
  EXPECT_EQ(asRgba16(decoded(dngFile(parts))), asRgba16(plain));
}

// The library goes on with what it makes of nothing.
TEST_F(Raw, CompressedOnesThatEndEarlyAreRefused) {
  DngParts parts;
  parts.value = wave;
  parts.isCompressed = true;
  std::size_t size = 0;
  parts.moreRaw = [&](TiffParts& raw) { size = raw.strips[0].size(); };
  const Bytes whole = dngFile(parts);
  for (const std::size_t kept : {size / 4, size / 2, size - 500, size - 40}) {
    parts.moreRaw = [&](TiffParts& raw) { raw.strips[0].resize(kept); };
    EXPECT_TRUE(faultOf(decodeBytes(dngFile(parts)))) << kept;
  }
  for (std::size_t kept = 0; kept < whole.size(); kept += 37)
    EXPECT_TRUE(faultOf(decodeBytes(ByteView(whole).first(kept)))) << kept;
}

TEST_F(Raw, AMinoltaIsReadWithTheExifOfItsHead) {
  OSTRA_NEEDS_PROGRAM("dcraw_emu");
  const Bytes file = mrwFile(60, 40);
  EXPECT_EQ(typeOf(file), "com.konicaminolta.raw-image");
  EXPECT_EQ(asRgba16(decoded(file)), opaqueRomm(byItsOwnProgram(file, "0.75")));
  const Dictionary tree = propertiesOf(file).tree;
  EXPECT_EQ(tree.at("{TIFF}").get<Dictionary>()->at("Model"), Value("DiMAGE A2"));
  EXPECT_EQ(tree.at("{Exif}").get<Dictionary>()->at("ExposureTime"), Value(0.25));
}

// Nothing in the file says how many bytes there shall be, and the library does not notice.
TEST_F(Raw, OneThatEndsBeforeItsLastRowIsRefused) {
  const Bytes whole = mrwFile(60, 40);
  for (const std::size_t missing : {1U, 20U, 100U, 1000U, 3000U})
    EXPECT_EQ(faultOf(decodeBytes(ByteView(whole).first(whole.size() - missing))), kDamaged) << missing;
}

TEST_F(Raw, StripsThatDoNotHoldTheirRowsAreRefused) {
  for (const unsigned bits : {12U, 16U}) {
    DngParts parts;
    parts.bits = bits;
    parts.white = (1U << bits) - 1;
    parts.value = [](unsigned x, unsigned, unsigned) { return 2 * x; };
    parts.rowsOfStrip = 100;
    parts.moreRaw = [](TiffParts& raw) { raw.strips[0].resize(raw.strips[0].size() - 200); };
    EXPECT_EQ(faultOf(decodeBytes(dngFile(parts))), kDamaged) << bits;
  }
}

TEST_F(Raw, DamagedOnesAreAWholePictureOrAFault) {
  std::mt19937 random(20261);
  DngParts parts;
  parts.value = wave;
  parts.hasPreview = true;
  const Bytes whole = dngFile(parts);
  for (int i = 0; i < 1500; ++i) {
    Bytes file = whole;
    // Mostly in the directories.
    for (int k = 0; k < 3; ++k) file[8 + random() % 700] = static_cast<std::uint8_t>(random());
    Limits limits;
    limits.decodedBytes = 64 << 20;
    limits.seconds = 5;
    const Answer<Pixels> answer = decodeBytes(file, limits);
    const auto* const pixels = std::get_if<Pixels>(&answer);
    if (pixels == nullptr) continue;
    EXPECT_EQ(pixels->bytes.view.size(), pixels->layout.bytesPerRow * pixels->layout.height);
  }
}

// The library would copy them over its own memory until that is at its end.
TEST_F(Raw, SixBySixCellsThatAreSaidToBeOthersAreRefused) {
  for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
    for (const std::uint16_t tag : {std::uint16_t{33422}, std::uint16_t{64777}}) {
      DngParts parts;
      parts.order = order;
      if (tag == 33422) parts.pattern.clear();
      parts.moreRaw = [&](TiffParts& raw) { raw.bytes(tag, kSixBySix); };
      EXPECT_EQ(faultOf(decodeBytes(dngFile(parts))), Fault{FaultKind::damaged}) << tag;
    }
  }
}

// What the library appends to some makers' models would end the process.
TEST_F(Raw, NamesOfModelsThatNoCameraHasAreRefused) {
  DngParts parts;
  parts.make = "Hasselblad";
  for (const bool isDng : {true, false}) {
    parts.isDng = isDng;
    parts.model = std::string(63, 'x');
    EXPECT_EQ(faultOf(decodeBytes(dngFile(parts))), Fault{FaultKind::damaged});
    parts.model = "H3D-39" + std::string(50, ' ');
    EXPECT_EQ(faultOf(decodeBytes(dngFile(parts))), std::nullopt);
  }
}

TEST_F(Raw, OneBeyondTheLimitsIsRefusedBeforeMemoryIsTaken) {
  DngParts parts;
  parts.width = 600;
  parts.height = 400;
  const Bytes file = dngFile(parts);
  Limits limits;
  limits.decodedBytes = 600 * 400 * 17;
  EXPECT_EQ(faultOf(decodeBytes(file, limits)), (Fault{FaultKind::limit, LimitName::decodedBytes}));
  limits.decodedBytes = 600 * 400 * 18;
  EXPECT_EQ(faultOf(decodeBytes(file, limits)), std::nullopt);
}

TEST_F(Raw, DevelopingStartsNoThread) {
  DngParts parts;
  parts.width = 900;
  parts.height = 700;
  parts.value = wave;
  decoded(dngFile(parts));
  EXPECT_EQ(ProcessTree(getpid()).threads, 1u);
}

}  // namespace
}  // namespace ostra::test
