#include <bit>
#include <cmath>
#include <tuple>

#include <gtest/gtest.h>
#include <tiffio.h>

#include "tests/platform/imageio/modules/tiff_files.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {
namespace {

using Samples = std::vector<std::uint16_t>;

constexpr std::uint16_t kBlackIsZero = 1, kRgb = 2;
constexpr std::uint16_t kPremultiplied = 1;

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

TEST(TiffLight, InLogarithmsIsGivenTheCurveOfSrgb) {
  const TemporaryFolder folder;
  const TiffBuilder builder;
  // White of three strengths, too much of it, and red.
  const std::vector<double> xyz = {0, 0, 0, 0.25, 0.25, 0.25, 1, 1, 1, 4, 4, 4, 0.2974, 0.1537, 0.014};
  const Bytes colour = byTheLibrary(folder.path("c.tif"), COMPRESSION_SGILOG, PHOTOMETRIC_LOGLUV, 32, 3,
                                    reals(builder, xyz, 32));
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
  const Bytes gray = byTheLibrary(folder.path("g.tif"), COMPRESSION_SGILOG, PHOTOMETRIC_LOGL, 32, 1,
                                  reals(builder, {0, 0.25, 1, 4}, 32));
  EXPECT_EQ(decoded(gray).layout.model, CGColorSpaceModel::monochrome);
  EXPECT_NEAR(grayOf(decoded(gray))[1], quarter, 300);
  EXPECT_EQ(grayOf(decoded(gray))[3], 65535);
}

TEST(TiffLight, InTheLogarithmsOfFilmIsRead) {
  OSTRA_NEEDS_PROGRAM("convert");
  const TemporaryFolder folder;
  byTheLibrary(folder.path("a.tif"), COMPRESSION_PIXARLOG, PHOTOMETRIC_RGB, 8, 3,
               {0, 50, 100, 150, 200, 255});
  const Samples mine = straightRgba16(decoded(readFile(folder.path("a.tif"))));
  EXPECT_EQ(mine, rgba16ByImageMagick(folder.path("a.tif")));
  EXPECT_NEAR(mine[4], 150 * 257, 3 * 257);
}

}  // namespace
}  // namespace ostra::test
