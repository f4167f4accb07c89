#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

constexpr Fault kDamaged{FaultKind::damaged};

enum class Way { plain, oldRuns, channels };

// Mantissas that are neither a run's mark nor the head of a scanline in channels.
Bytes randomScanlines(std::uint32_t scanlines, std::uint32_t length) {
  Bytes pixels = randomBytes(std::size_t{4} * scanlines * length, 7);
  for (std::size_t i = 0; i < pixels.size(); i += 4) {
    pixels[i] |= 128;
    pixels[i + 3] = static_cast<std::uint8_t>(121 + pixels[i + 3] % 10);
    if (i >= 4 && pixels[i + 1] % 3 == 0) std::copy_n(&pixels[i - 4], 4, &pixels[i]);
  }
  return pixels;
}

void appendOldRuns(Bytes& file, ByteView scanline) {
  for (std::size_t x = 0; x < scanline.size() / 4;) {
    const ByteView pixel = scanline.subspan(4 * x, 4);
    file.insert(file.end(), pixel.begin(), pixel.end());
    std::size_t run = 0;
    while (x + run + 1 < scanline.size() / 4 &&
           std::equal(pixel.begin(), pixel.end(),
                      scanline.begin() + static_cast<std::ptrdiff_t>(4 * (x + run + 1))))
      ++run;
    x += run + 1;
    for (; run > 0; run >>= 8) file.insert(file.end(), {1, 1, 1, static_cast<std::uint8_t>(run)});
  }
}

void appendChannels(Bytes& file, ByteView scanline) {
  const std::size_t length = scanline.size() / 4;
  file.insert(file.end(), {2, 2, static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length)});
  for (std::size_t c = 0; c < 4; ++c) {
    const auto value = [&](std::size_t x) { return scanline[4 * x + c]; };
    for (std::size_t x = 0; x < length;) {
      std::size_t run = 1;
      while (x + run < length && run < 127 && value(x + run) == value(x)) ++run;
      if (run > 1) {
        file.insert(file.end(), {static_cast<std::uint8_t>(128 + run), value(x)});
      } else {
        file.insert(file.end(), {1, value(x)});
      }
      x += run;
    }
  }
}

Bytes hdrOf(const Bytes& pixels, std::uint32_t length, Way way, const std::string& resolution,
            const std::string& lines = "FORMAT=32-bit_rle_rgbe\n") {
  Bytes file = bytesOfText("#?RADIANCE\n" + lines + "\n" + resolution + "\n");
  for (std::size_t at = 0; at < pixels.size(); at += std::size_t{4} * length) {
    const ByteView scanline = ByteView(pixels).subspan(at, std::size_t{4} * length);
    if (way == Way::plain) file.insert(file.end(), scanline.begin(), scanline.end());
    if (way == Way::oldRuns) appendOldRuns(file, scanline);
    if (way == Way::channels) appendChannels(file, scanline);
  }
  return file;
}

double srgb(double light) {
  light = std::clamp(light, 0.0, 1.0);
  return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

class HdrReading : public testing::TestWithParam<Way> {};

TEST_P(HdrReading, GivesTheValuesThatSrgbStoresForTheLight) {
  const Bytes pixels = randomScanlines(kHeight, kWidth);
  const Bytes file = hdrOf(pixels, kWidth, GetParam(), "-Y 33 +X 47");
  const Pixels decodedPixels = decoded(file);
  EXPECT_EQ(std::get<NamedSpace>(decodedPixels.profile).name, kCGColorSpaceSRGB);
  const auto samples = asRgba16(decodedPixels);
  ASSERT_EQ(samples.size(), pixels.size());
  for (std::size_t i = 0; i < samples.size(); i += 4) {
    for (std::size_t c = 0; c < 3; ++c)
      ASSERT_NEAR(samples[i + c], 65535 * srgb(pixels[i + c] * std::pow(2, pixels[i + 3] - 136)), 1) << i / 4;
  }
}

TEST_P(HdrReading, RefusesAFileThatIsCutOff) {
  const Bytes file = hdrOf(randomScanlines(kHeight, kWidth), kWidth, GetParam(), "-Y 33 +X 47");
  for (std::size_t size = 0; size < file.size(); size += size + 40 < file.size() ? 37 : 1)
    ASSERT_TRUE(faultOf(decodeBytes(ByteView(file).first(size)))) << size << " of " << file.size();
  EXPECT_FALSE(faultOf(decodeBytes(file)));
}

TEST_P(HdrReading, PutsEveryOrderOfScanlinesUpright) {
  const Bytes upright = randomScanlines(kHeight, kWidth);
  const auto expected = asRgba16(decoded(hdrOf(upright, kWidth, GetParam(), "-Y 33 +X 47")));
  for (const bool columns : {false, true}) {
    for (const bool right : {false, true}) {
      for (const bool bottom : {false, true}) {
        Bytes pixels;
        for (std::uint32_t i = 0; i < (columns ? kWidth : kHeight); ++i) {
          for (std::uint32_t j = 0; j < (columns ? kHeight : kWidth); ++j) {
            std::size_t x = columns ? i : j, y = columns ? j : i;
            if (right) x = kWidth - 1 - x;
            if (bottom) y = kHeight - 1 - y;
            const auto pixel = upright.begin() + static_cast<std::ptrdiff_t>(4 * (y * kWidth + x));
            pixels.insert(pixels.end(), pixel, pixel + 4);
          }
        }
        const std::string y = bottom ? "+Y 33" : "-Y 33", x = right ? "-X 47" : "+X 47";
        const std::string resolution = columns ? x + " " + y : y + " " + x;
        EXPECT_EQ(asRgba16(decoded(hdrOf(pixels, columns ? kHeight : kWidth, GetParam(), resolution))),
                  expected)
            << resolution;
      }
    }
  }
}

std::string nameOf(const testing::TestParamInfo<Way>& info) {
  if (info.param == Way::plain) return "Plain";
  return info.param == Way::oldRuns ? "OldRuns" : "Channels";
}

INSTANTIATE_TEST_SUITE_P(EveryWay, HdrReading, testing::Values(Way::plain, Way::oldRuns, Way::channels),
                         nameOf);

// ImageMagick calls the same numbers linear; its own curve, a little off, makes sRGB of them.
TEST(HdrOfImageMagick, IsReadAsImageMagickReadsIt) {
  OSTRA_NEEDS_PROGRAM("convert");
  const Bytes file =
      madeByImageMagick({"-size", "97x61", "-seed", "3", "plasma:tomato-steelblue", "-depth", "16"}, "hdr");
  const TemporaryFolder folder;
  writeFile(folder.path("a.hdr"), file);
  run({"convert", folder.path("a.hdr"), "-colorspace", "sRGB", "-depth", "16", folder.path("a.png")});
  const auto theirs = rgba16ByImageMagick(folder.path("a.png")), ours = asRgba16(decoded(file));
  ASSERT_EQ(theirs.size(), ours.size());
  for (std::size_t i = 0; i < ours.size(); ++i) ASSERT_NEAR(ours[i], theirs[i], 80) << i;
}

TEST(HdrXyz, OfTheWhiteOfSrgbIsWhite) {
  // 0.9505, 1, 1.0891 and half of it, as mantissas of 2^-7 and 2^-8.
  const Bytes pixels = {122, 128, 139, 129, 122, 128, 139, 128};
  const auto samples =
      asRgba16(decoded(hdrOf(pixels, 2, Way::plain, "-Y 1 +X 2", "FORMAT=32-bit_rle_xyze\n")));
  for (std::size_t c = 0; c < 3; ++c) {
    EXPECT_NEAR(samples[c], 65535, 500);
    EXPECT_NEAR(samples[4 + c], srgb(0.5) * 65535, 500);
  }
}

TEST(HdrPrimaries, MakeASpaceOfTheirOwn) {
  const Bytes pixels = {64, 128, 32, 128};
  const auto withPrimaries = [&](const std::string& numbers) {
    return decoded(hdrOf(pixels, 1, Way::plain, "-Y 1 +X 1", "PRIMARIES= " + numbers + "\n"));
  };
  const Pixels wide = withPrimaries("0.68 0.32 0.265 0.69 0.15 0.06 0.3127 0.329");
  const auto* space = std::get_if<Calibrated>(&wide.profile);
  ASSERT_NE(space, nullptr);
  EXPECT_EQ((*space->primaries)[0], 0.68);
  EXPECT_EQ(space->white[1], 0.329);
  EXPECT_NEAR(asRgba16(wide)[1], 65535 * std::pow(0.5, 1 / space->gamma), 1);
  EXPECT_TRUE(
      std::holds_alternative<NamedSpace>(withPrimaries("0.64 0.33 0.3 0.6 0.15 0.06 0.3127 0.329").profile));
  for (const char* useless :
       {"0 0 0 0 0 0 0 0", "0.64 0.33", "nan nan nan nan nan nan nan nan", "a b c d e f g h"})
    EXPECT_TRUE(std::holds_alternative<NamedSpace>(withPrimaries(useless).profile)) << useless;
}

TEST(HdrHeader, OfAnotherKindIsRefused) {
  const Bytes pixels = {128, 128, 128, 128};
  const auto isRefused = [&](const std::string& resolution, const std::string& lines) {
    return faultOf(decodeBytes(hdrOf(pixels, 1, Way::plain, resolution, lines))).has_value();
  };
  EXPECT_FALSE(isRefused("-Y 1 +X 1", ""));
  EXPECT_TRUE(isRefused("-Y 1 +X 1", "FORMAT=32-bit_rle_other\n"));
  for (const char* resolution :
       {"", "-Y 1", "-Y 1 +Y 1", "Y 1 X 1", "-Y 0 +X 1", "-Y -1 +X 1", "-Y 1 +X 1 z", "-Y 4294967297 +X 1",
        "-Y 1 +X 99999999999999999999", "-Z 1 +X 1", "-Y 1 +X 2"})
    EXPECT_TRUE(isRefused(resolution, "")) << resolution;
}

TEST(HdrScanlines, OfImpossibleRunsAreRefused) {
  const auto fault = [](const Bytes& pixels, const char* resolution) {
    return faultOf(decodeBytes(joined({bytesOfText("#?RGBE\n\n" + std::string(resolution) + "\n"), pixels})));
  };
  const Bytes pixel = {200, 1, 1, 128};
  EXPECT_EQ(fault({1, 1, 1, 1}, "-Y 1 +X 1"), kDamaged) << "nothing to repeat";
  EXPECT_EQ(fault(joined({pixel, {1, 1, 1, 2}}), "-Y 1 +X 2"), kDamaged) << "beyond the scanline";
  EXPECT_FALSE(fault(joined({pixel, {1, 1, 1, 1}}), "-Y 1 +X 2"));
  EXPECT_EQ(fault(Bytes{2, 2, 0, 9, 136, 5, 136, 5, 136, 5, 136, 5}, "-Y 1 +X 8"), kDamaged)
      << "another length";
  EXPECT_FALSE(fault(Bytes{2, 2, 0, 8, 136, 5, 136, 5, 136, 5, 136, 5}, "-Y 1 +X 8"));
  EXPECT_EQ(fault(Bytes{2, 2, 0, 8, 137, 5, 136, 5, 136, 5, 136, 5}, "-Y 1 +X 8"), kDamaged)
      << "too long a run";
  EXPECT_EQ(fault(Bytes{2, 2, 0, 8, 0, 5, 136, 5, 136, 5, 136, 5}, "-Y 1 +X 8"), kDamaged)
      << "a run of nothing";
}

TEST(HdrLimits, StopBeforeAnythingIsAllocated) {
  const Bytes file = bytesOfText("#?RADIANCE\n\n-Y 100000 +X 100000\n");
  EXPECT_EQ(faultOf(decodeBytes(file)), (Fault{FaultKind::limit, LimitName::pixels}));
  EXPECT_EQ(faultOf(decodeBytes(bytesOfText("#?RADIANCE\n\n-Y 9000 +X 9000\n"))),
            (Fault{FaultKind::limit, LimitName::compressionRatio}));
}

TEST(HdrProperties, TellWhatTheHeaderSays) {
  const Bytes file =
      hdrOf({128, 128, 128, 128}, 1, Way::plain, "-Y 1 +X 1", "# by hand\nSOFTWARE=a program\nEXPOSURE=2\n");
  const Properties properties = propertiesOf(file);
  EXPECT_EQ(properties.tree.at("Depth"), Value(32));
  EXPECT_EQ(properties.tree.at("IsFloat"), Value(true));
  EXPECT_EQ(properties.tree.at("{TIFF}").get<Dictionary>()->at("Software"), Value("a program"));
  EXPECT_EQ(properties.carrier->comments, std::vector<std::string>{"by hand"});
}

}  // namespace
}  // namespace ostra::test
