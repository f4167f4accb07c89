#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include <ImfChromaticitiesAttribute.h>
#include <ImfStandardAttributes.h>
#include <ImfStringAttribute.h>
#include <gtest/gtest.h>
#include <half.h>
#include <unistd.h>

#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/modules/exr_files.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/process_tree.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

constexpr Fault kDamaged{FaultKind::damaged};

constexpr Imf::Compression kEveryCompression[] = {
    Imf::NO_COMPRESSION,   Imf::RLE_COMPRESSION,   Imf::ZIPS_COMPRESSION, Imf::ZIP_COMPRESSION,
    Imf::PIZ_COMPRESSION,  Imf::PXR24_COMPRESSION, Imf::B44_COMPRESSION,  Imf::B44A_COMPRESSION,
    Imf::DWAA_COMPRESSION, Imf::DWAB_COMPRESSION};

/// IEC 61966-2-1, in 16 bits.
std::uint16_t srgb(double light) {
  if (!(light > 0)) return 0;
  const double value = light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
  return static_cast<std::uint16_t>(std::lround(65535 * std::min(value, 1.0)));
}

float wave(int x, int y, double phase) {
  return static_cast<float>(0.5 + 0.6 * std::sin(0.11 * x + phase) * std::cos(0.07 * y + 2 * phase));
}
ExrLight waveOf(double phase) {
  return [phase](int x, int y) { return wave(x, y, phase); };
}
ExrLight constant(float light) {
  return [light](int, int) { return light; };
}
std::vector<ExrChannelParts> rgb(Imf::PixelType type = Imf::HALF) {
  return {{"R", waveOf(0), type}, {"G", waveOf(1), type}, {"B", waveOf(2), type}};
}

using Pixel = std::array<std::uint16_t, 4>;
Pixel pixelAt(const Pixels& pixels, std::uint32_t x, std::uint32_t y) {
  const std::vector<std::uint16_t> all = asRgba16(pixels);
  Pixel pixel{};
  std::copy_n(all.begin() + 4 * (std::ptrdiff_t{y} * pixels.layout.width + x), 4, pixel.begin());
  return pixel;
}

/// What the waves of red, green and blue are, stored as halves.
std::vector<std::uint16_t> expectedWaves(int width, int height) {
  std::vector<std::uint16_t> result;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int c = 0; c < 3; ++c) result.push_back(srgb(half(wave(x, y, c))));
      result.push_back(65535);
    }
  }
  return result;
}

/// The light that ffmpeg, which has a reader of its own, finds in the file, plane by plane.
std::vector<float> byAnotherReader(const Bytes& file, const std::string& planes) {
  const TemporaryFolder folder;
  writeFile(folder.path("a.exr"), file);
  run({"ffmpeg", "-loglevel", "error", "-i", folder.path("a.exr"), "-f", "rawvideo", "-pix_fmt", planes,
       folder.path("raw")});
  const Bytes bytes = readFile(folder.path("raw"));
  std::vector<float> light(bytes.size() / 4);
  std::memcpy(light.data(), bytes.data(), 4 * light.size());
  return light;
}

std::optional<Fault> faultOfFile(const Bytes& file, const Limits& limits = {}) {
  return faultOf(decodeBytes(file, limits));
}

TEST(Exr, HalvesOfEveryLosslessCompressionAndOddSizeAreExact) {
  for (const Imf::Compression compression :
       {Imf::NO_COMPRESSION, Imf::RLE_COMPRESSION, Imf::ZIPS_COMPRESSION, Imf::ZIP_COMPRESSION,
        Imf::PIZ_COMPRESSION, Imf::PXR24_COMPRESSION}) {
    for (const auto& [width, height] : {std::pair(1, 1), {1, 7}, {7, 1}, {47, 33}, {130, 70}}) {
      ExrParts parts = exrParts(width, height, rgb());
      parts.compression = compression;
      EXPECT_EQ(asRgba16(decoded(exrFile(parts))), expectedWaves(width, height))
          << compression << " " << width;
    }
  }
}

TEST(Exr, EveryCompressionGivesThePixelsThatAnotherReaderGives) {
  OSTRA_NEEDS_PROGRAM("ffmpeg");
  constexpr int kWide = 150;
  for (const Imf::Compression compression : kEveryCompression) {
    // A cosine transform is rounded in another order there, and of its last block whole ones only are read.
    const bool isTransformed = compression == Imf::DWAA_COMPRESSION || compression == Imf::DWAB_COMPRESSION;
    const int high = isTransformed ? 320 : 290;
    ExrParts parts = exrParts(kWide, high, rgb());
    parts.compression = compression;
    const Bytes file = exrFile(parts);
    const std::vector<std::uint16_t> ours = asRgba16(decoded(file));
    const std::vector<float> light = byAnotherReader(file, "gbrpf32le");
    const std::size_t plane = std::size_t{kWide} * static_cast<std::size_t>(high);
    ASSERT_EQ(light.size(), 3 * plane);
    int worst = 0;
    for (std::size_t i = 0; i < plane; ++i) {
      for (std::size_t c = 0; c < 3; ++c)
        worst = std::max(worst, std::abs(ours[4 * i + c] - srgb(light[plane * ((c + 2) % 3) + i])));
    }
    EXPECT_LE(worst, isTransformed ? 60 : 0) << compression;
  }
}

TEST(Exr, FloatsAreExactAndIntegersAreTheLightThatTheySay) {
  ExrParts parts = exrParts(kWidth, kHeight, rgb(Imf::FLOAT));
  const std::vector<std::uint16_t> ours = asRgba16(decoded(exrFile(parts)));
  for (int y = 0; y < static_cast<int>(kHeight); ++y) {
    for (int x = 0; x < static_cast<int>(kWidth); ++x)
      ASSERT_EQ(ours[4 * (static_cast<std::size_t>(y) * kWidth + static_cast<std::size_t>(x))],
                srgb(wave(x, y, 0)));
  }
  const ExrLight steps = [](int x, int) { return static_cast<float>(x); };
  const Pixels pixels = decoded(exrFile(exrParts(3, 1, {{"R", steps, Imf::UINT}, {"G", constant(0)}})));
  EXPECT_EQ(pixelAt(pixels, 0, 0), (Pixel{0, 0, 0, 65535}));
  EXPECT_EQ(pixelAt(pixels, 1, 0), (Pixel{65535, 0, 0, 65535}));
  EXPECT_EQ(pixelAt(pixels, 2, 0), (Pixel{65535, 0, 0, 65535}));
}

TEST(Exr, WhatIsNoFractionOfWhiteBecomesTheNearestEnd) {
  const float infinite = std::numeric_limits<float>::infinity(), none = std::nanf("");
  const ExrLight odd = [&](int x, int) { return std::array{-1.F, 1.5F, infinite, -infinite, none}[x]; };
  for (const Imf::PixelType type : {Imf::HALF, Imf::FLOAT}) {
    const std::vector<std::uint16_t> ours = asRgba16(decoded(exrFile(exrParts(5, 1, {{"R", odd, type}}))));
    const std::vector<std::uint16_t> reds = {ours[0], ours[4], ours[8], ours[12], ours[16]};
    EXPECT_EQ(reds, (std::vector<std::uint16_t>{0, 65535, 65535, 0, 0}));
  }
}

TEST(Exr, LightIsTakenOffItsOpacity) {
  const ExrLight opacity = [](int x, int) { return std::array{1.F, 0.5F, 0.25F, 0.F}[x]; };
  const Pixels pixels = decoded(exrFile(
      exrParts(4, 1, {{"R", constant(0.25)}, {"G", constant(0.125)}, {"B", constant(0)}, {"A", opacity}})));
  EXPECT_EQ(pixelAt(pixels, 0, 0), (Pixel{srgb(0.25), srgb(0.125), 0, 65535}));
  EXPECT_EQ(pixelAt(pixels, 1, 0), (Pixel{srgb(0.5), srgb(0.25), 0, 32768}));
  EXPECT_EQ(pixelAt(pixels, 2, 0), (Pixel{65535, srgb(0.5), 0, 16384}));
  EXPECT_EQ(pixelAt(pixels, 3, 0)[3], 0);
}

TEST(Exr, APictureThatWouldBeTransparentAllOverIsOpaque) {
  std::vector<ExrChannelParts> channels = rgb();
  channels.push_back({"A", constant(0)});
  EXPECT_EQ(asRgba16(decoded(exrFile(exrParts(9, 4, channels)))), expectedWaves(9, 4));
}

TEST(Exr, LuminanceIsGrayWithAndWithoutAlpha) {
  const Pixels gray = decoded(exrFile(exrParts(47, 33, {{"Y", waveOf(1)}})));
  EXPECT_EQ(gray.layout.model, CGColorSpaceModel::monochrome);
  EXPECT_EQ(gray.layout.bitsPerPixel, 16);
  EXPECT_EQ(pixelAt(gray, 40, 20)[0], srgb(half(wave(40, 20, 1))));
  const Pixels transparent = decoded(exrFile(exrParts(2, 1, {{"Y", constant(0.25)}, {"A", constant(0.5)}})));
  EXPECT_EQ(transparent.layout.bitsPerPixel, 32);
  EXPECT_EQ(pixelAt(transparent, 1, 0), (Pixel{srgb(0.5), srgb(0.5), srgb(0.5), 32768}));
}

TEST(Exr, LuminanceWithChromaIsTheColour) {
  const Pixels pixels = decoded(chromaExrFile(32, 18, 0.5F, 0.25F, 0.125F));
  const Pixel pixel = pixelAt(pixels, 15, 8);
  // Three halves and their arithmetic: half of a thousandth each.
  EXPECT_NEAR(pixel[0], srgb(0.5), 100);
  EXPECT_NEAR(pixel[1], srgb(0.25), 100);
  EXPECT_NEAR(pixel[2], srgb(0.125), 100);
}

TEST(Exr, TheFirstLayerIsTakenWhereThereAreNoBareChannels) {
  const std::vector<ExrChannelParts> layers = {
      {"b.R", constant(1)}, {"b.G", constant(0)}, {"a.depth.Z", constant(1)}, {"c.R", constant(0)}};
  EXPECT_EQ(pixelAt(decoded(exrFile(exrParts(2, 2, layers))), 0, 0), (Pixel{65535, 0, 0, 65535}));
  std::vector<ExrChannelParts> bare = layers;
  bare.push_back({"B", constant(1)});
  EXPECT_EQ(pixelAt(decoded(exrFile(exrParts(2, 2, bare))), 0, 0), (Pixel{0, 0, 65535, 65535}));
}

TEST(Exr, WhatHasNoColourIsNoPicture) {
  EXPECT_EQ(faultOfFile(exrFile(exrParts(4, 4, {{"Z", constant(1)}}))), kDamaged);
  EXPECT_EQ(faultOfFile(deepExrFile(5, 4)), kDamaged);
}

TEST(Exr, ColourOfFewerSamplesThanPixelsIsRefused) {
  std::vector<ExrChannelParts> channels = rgb();
  channels[1].sampling = 2;
  EXPECT_EQ(faultOfFile(exrFile(exrParts(8, 8, channels))), kDamaged);
}

TEST(Exr, PartsAreCountedAndTheFirstIsThePicture) {
  const Bytes file =
      exrFileOfParts({exrParts(4, 3, {{"R", constant(1)}}), exrParts(4, 3, {{"G", constant(1)}})});
  auto opened = openBytes(file);
  EXPECT_EQ(std::get<std::unique_ptr<Reader>>(opened)->opened().count, 2u);
  const Pixels pixels = decoded(file);
  EXPECT_EQ(pixels.layout.width, 4u);
  EXPECT_EQ(pixelAt(pixels, 3, 2), (Pixel{65535, 0, 0, 65535}));
}

TEST(Exr, OfTilesInLevelsTheFirstLevelIsThePicture) {
  for (const Imf::LineOrder order : {Imf::INCREASING_Y, Imf::DECREASING_Y, Imf::RANDOM_Y}) {
    ExrParts parts = exrParts(75, 70, rgb());
    parts.tile = 32;
    parts.order = order;
    EXPECT_EQ(asRgba16(decoded(exrFile(parts))), expectedWaves(75, 70)) << order;
  }
}

TEST(Exr, RowsFromTheBottomArePutUpright) {
  ExrParts parts = exrParts(47, 33, rgb());
  parts.order = Imf::DECREASING_Y;
  EXPECT_EQ(asRgba16(decoded(exrFile(parts))), expectedWaves(47, 33));
}

TEST(Exr, ThePictureIsTheDisplayWindow) {
  ExrParts inside = exrParts(6, 5, rgb());
  inside.data = exrWindow(2, 1, 3, 2);
  const Pixels framed = decoded(exrFile(inside));
  EXPECT_EQ(pixelAt(framed, 2, 1)[0], srgb(half(wave(0, 0, 0))));
  EXPECT_EQ(pixelAt(framed, 4, 2)[1], srgb(half(wave(2, 1, 1))));
  EXPECT_EQ(pixelAt(framed, 1, 1), (Pixel{0, 0, 0, 65535}));
  EXPECT_EQ(pixelAt(framed, 5, 4), (Pixel{0, 0, 0, 65535}));

  inside.channels.push_back({"A", constant(1)});
  EXPECT_EQ(pixelAt(decoded(exrFile(inside)), 1, 1), (Pixel{0, 0, 0, 0}));

  ExrParts beyond = exrParts(4, 4, rgb());
  beyond.data = exrWindow(-3, -2, 12, 9);
  const Pixels cut = decoded(exrFile(beyond));
  EXPECT_EQ(cut.layout.width, 4u);
  EXPECT_EQ(pixelAt(cut, 0, 0)[0], srgb(half(wave(3, 2, 0))));
  EXPECT_EQ(pixelAt(cut, 3, 3)[2], srgb(half(wave(6, 5, 2))));
}

TEST(Exr, ToldPrimariesAreTheProfileUnlessTheyAreThoseOfSrgb) {
  const auto with = [](const Imf::Chromaticities& primaries) {
    ExrParts parts = exrParts(1, 1, {{"R", constant(0.25)}});
    parts.more = [=](Imf::Header& header) { Imf::addChromaticities(header, primaries); };
    return decoded(exrFile(parts));
  };
  const Pixels wide = with({{0.708F, 0.292F}, {0.17F, 0.797F}, {0.131F, 0.046F}, {0.3127F, 0.329F}});
  const auto* calibrated = std::get_if<Calibrated>(&wide.profile);
  ASSERT_NE(calibrated, nullptr);
  EXPECT_NEAR((*calibrated->primaries)[3], 0.797, 1e-6);
  EXPECT_EQ(calibrated->gamma, 2.2);
  EXPECT_EQ(pixelAt(wide, 0, 0)[0], std::lround(65535 * std::pow(0.25, 1 / 2.2)));
  const Pixels usual = with({});
  ASSERT_NE(std::get_if<NamedSpace>(&usual.profile), nullptr);
  EXPECT_EQ(pixelAt(usual, 0, 0)[0], srgb(0.25));
}

TEST(Exr, PropertiesTellSizeDepthDensityAndTheExposure) {
  ExrParts parts = exrParts(6, 5, rgb());
  parts.channels[0].type = Imf::FLOAT;
  parts.more = [](Imf::Header& header) {
    header.pixelAspectRatio() = 2;
    Imf::addXDensity(header, 72);
    Imf::addOwner(header, "Somebody");
    Imf::addComments(header, "Said.");
    Imf::addCapDate(header, "2024:05:06 07:08:09");
    Imf::addExpTime(header, 0.5);
    Imf::addAperture(header, 4);
    Imf::addIsoSpeed(header, 200);
    Imf::addLatitude(header, -1.5);
    Imf::addLongitude(header, 2.25);
    header.insert("cameraMake", Imf::StringAttribute("Maker"));
  };
  const Dictionary tree = propertiesOf(exrFile(parts)).tree;
  EXPECT_EQ(tree.at("PixelWidth"), Value(6));
  EXPECT_EQ(tree.at("Depth"), Value(32));
  EXPECT_EQ(tree.at("IsFloat"), Value(true));
  EXPECT_EQ(tree.at("DPIWidth"), Value(72.0));
  EXPECT_EQ(tree.at("DPIHeight"), Value(144.0));
  const Dictionary& tiff = *tree.at("{TIFF}").get<Dictionary>();
  EXPECT_EQ(tiff.at("Make"), Value("Maker"));
  EXPECT_EQ(tiff.at("Copyright"), Value("Somebody"));
  const Dictionary& exif = *tree.at("{Exif}").get<Dictionary>();
  EXPECT_EQ(exif.at("ExposureTime"), Value(0.5));
  EXPECT_EQ(exif.at("FNumber"), Value(4.0));
  EXPECT_EQ(exif.at("ISOSpeedRatings"), Value(Array{Value(200)}));
  EXPECT_EQ(exif.at("DateTimeOriginal"), Value("2024:05:06 07:08:09"));
  EXPECT_EQ(exif.at("UserComment"), Value("Said."));
  const Dictionary& gps = *tree.at("{GPS}").get<Dictionary>();
  EXPECT_EQ(gps.at("Latitude"), Value(1.5));
  EXPECT_EQ(gps.at("LatitudeRef"), Value("S"));
  EXPECT_EQ(gps.at("LongitudeRef"), Value("E"));
}

TEST(Exr, TheShapeOfAPixelStaysWithoutADensity) {
  ExrParts parts = exrParts(6, 5, rgb());
  parts.more = [](Imf::Header& header) { header.pixelAspectRatio() = 1.5F; };
  const Properties properties = propertiesOf(exrFile(parts));
  ASSERT_TRUE(properties.carrier->pixelAspect);
  EXPECT_EQ(properties.carrier->pixelAspect->x, 2u);
  EXPECT_EQ(properties.carrier->pixelAspect->y, 3u);
  EXPECT_EQ(properties.tree.count("DPIWidth"), 0u);
}

TEST(Exr, OneThatIsCutOffAnywhereIsRefused) {
  for (const Imf::Compression compression : kEveryCompression) {
    ExrParts parts = exrParts(40, 35, rgb());
    parts.compression = compression;
    const Bytes whole = exrFile(parts);
    for (std::size_t size = 0; size < whole.size(); size += size < 400 ? 1 : 37)
      EXPECT_TRUE(faultOf(decodeBytes(ByteView(whole).first(size)))) << compression << " " << size;
    EXPECT_TRUE(faultOf(decodeBytes(ByteView(whole).first(whole.size() - 1)))) << compression;
  }
}

TEST(Exr, OfTilesThatAreCutOffNoneOfThePictureIsMissing) {
  ExrParts parts = exrParts(40, 35, rgb());
  parts.tile = 16;
  const Bytes whole = exrFile(parts);
  const std::vector<std::uint16_t> expected = expectedWaves(40, 35);
  bool wasRefused = false;
  for (std::size_t size = 0; size < whole.size(); size += 7) {
    const Answer<Pixels> answer = decodeBytes(ByteView(whole).first(size));
    const auto* const pixels = std::get_if<Pixels>(&answer);
    if (pixels == nullptr) wasRefused = true;
    // Smaller levels lie behind.
    else
      EXPECT_EQ(asRgba16(*pixels), expected) << size;
  }
  EXPECT_TRUE(wasRefused);
}

TEST(Exr, OneWhoseWriterDidNotComeToItsEndIsRefused) {
  ExrParts parts = exrParts(8, 40, rgb());
  parts.compression = Imf::ZIPS_COMPRESSION;
  Bytes file = exrFile(parts);
  // The table lies behind the header, one place of 8 bytes a line; the first block begins behind it.
  constexpr std::size_t kTable = 8 * 40, kPlace = 8 * 25;
  std::size_t table = 0;
  for (std::size_t at = 8; table == 0 && at + 8 < file.size(); ++at) {
    std::uint64_t place = 0;
    std::memcpy(&place, &file[at], 8);
    if (place == at + kTable) table = at;
  }
  ASSERT_NE(table, 0u);
  EXPECT_EQ(faultOfFile(file), std::nullopt);
  std::memset(&file[table + kPlace], 0, 8);
  EXPECT_EQ(faultOfFile(file), kDamaged);
}

TEST(Exr, DamagedOnesAreAWholePictureOrAFault) {
  std::mt19937 random(20260);
  for (const Imf::Compression compression : kEveryCompression) {
    ExrParts parts = exrParts(37, 21, rgb());
    parts.compression = compression;
    const Bytes whole = exrFile(parts);
    for (int i = 0; i < 60; ++i) {
      Bytes file = whole;
      for (int k = 0; k < 3; ++k)
        file[8 + random() % (file.size() - 8)] = static_cast<std::uint8_t>(random());
      Limits limits;
      limits.decodedBytes = 64 << 20;
      const Answer<Pixels> answer = decodeBytes(file, limits);
      const auto* const pixels = std::get_if<Pixels>(&answer);
      if (pixels == nullptr) continue;
      EXPECT_EQ(pixels->bytes.view.size(), pixels->layout.bytesPerRow * pixels->layout.height);
    }
  }
}

TEST(Exr, WindowsAndTilesBeyondTheLimitsAreRefusedBeforeMemoryIsTaken) {
  Limits limits;
  limits.decodedBytes = 1 << 20;
  limits.harmlessBytes = 1 << 20;
  ExrParts wideFrame = exrParts(4, 4, rgb());
  wideFrame.display = exrWindow(0, 0, 40000, 40000);
  EXPECT_EQ(faultOfFile(exrFile(wideFrame)), (Fault{FaultKind::limit, LimitName::pixels}));
  EXPECT_EQ(faultOfFile(exrFile(exrParts(500, 500, rgb())), limits),
            (Fault{FaultKind::limit, LimitName::decodedBytes}));
  ExrParts tall = exrParts(4, 4, rgb());
  tall.data = exrWindow(0, 0, 900, 1300);
  EXPECT_EQ(faultOfFile(exrFile(tall), limits), (Fault{FaultKind::limit, LimitName::decodedBytes}));
  ExrParts largeTiles = exrParts(4, 4, rgb());
  largeTiles.tile = 512;
  EXPECT_EQ(faultOfFile(exrFile(largeTiles), limits), (Fault{FaultKind::limit, LimitName::decodedBytes}));
}

TEST(Exr, ItsDecoderStartsNoThread) {
  ExrParts parts = exrParts(200, 600, rgb());
  parts.compression = Imf::PIZ_COMPRESSION;
  decoded(exrFile(parts));
  EXPECT_EQ(ProcessTree(getpid()).threads, 1u);
}

}  // namespace
}  // namespace ostra::test
