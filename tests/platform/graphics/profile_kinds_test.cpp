#include <algorithm>
#include <cmath>
#include <filesystem>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/platform/graphics/built_profiles.h"
#include "tests/platform/graphics/pictures.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {
namespace {

std::vector<unsigned> randomValues(std::size_t count, std::size_t bits) {
  std::mt19937 random(13);
  std::uniform_int_distribution<unsigned> value(0, bits == 8 ? 255 : 65535);
  std::vector<unsigned> values(count);
  for (unsigned& v : values) v = value(random);
  return values;
}

struct Worst {
  double error = 0;
  double mean = 0;
};

/// How far a drawing is from the library's own answer in double precision, in code values.
Worst errorOfDrawing(const Bytes& from, const Bytes& to, std::size_t fromBits, std::size_t toBits,
                     CGColorRenderingIntent intent = CGColorRenderingIntent::standard) {
  const auto source = CGColorSpace::createWithICCData(from),
             destination = CGColorSpace::createWithICCData(to);
  const auto n = static_cast<std::size_t>(source->numberOfComponents());
  const auto m = static_cast<std::size_t>(destination->numberOfComponents());
  const auto values = randomValues(n * 3000, fromBits);
  std::vector<double> fractions;
  for (const unsigned v : values) fractions.push_back(v / (fromBits == 8 ? 255.0 : 65535.0));
  const auto wanted = convertByLibrary(from, to, fractions, intent);
  const auto found =
      drawn({values, fromBits, n, CGImageAlphaInfo::none, source, intent}, destination, toBits, false);
  const std::size_t stored = m == 3 ? 4 : m;
  Worst worst;
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    const double most = toBits == 8 ? 255 : 65535;
    const double error = std::abs(found.at(i / m * stored + i % m) - std::round(wanted[i] * most));
    worst.error = std::max(worst.error, error);
    worst.mean += error / static_cast<double>(wanted.size());
  }
  return worst;
}

Bytes named(std::string_view name) {
  const ByteView profile = CGColorSpace::createWithName(name)->iccData();
  return {profile.begin(), profile.end()};
}

TEST(TableProfile, ConvertsAsTheColorLibraryDoesInDoublePrecision) {
  const Bytes sRGB = named(kCGColorSpaceSRGB), gray = named(kCGColorSpaceGenericGrayGamma2_2);
  const Bytes cmyk = cmykTableProfile(), rgb = rgbTableProfile(), grayLab = grayLabProfile();
  for (const auto& [from, to] : {std::pair{cmyk, sRGB},
                                 {cmyk, gray},
                                 {cmyk, rgb},
                                 {rgb, sRGB},
                                 {rgb, gray},
                                 {sRGB, rgb},
                                 {grayLab, sRGB},
                                 {sRGB, grayLab},
                                 {grayLab, rgb}}) {
    EXPECT_LE(errorOfDrawing(from, to, 8, 8).error, 1);
    EXPECT_LE(errorOfDrawing(from, to, 8, 16).error, 2);
    EXPECT_LE(errorOfDrawing(from, to, 16, 16).error, 2);
  }
  EXPECT_LE(errorOfDrawing(sRGB, cmyk, 8, 8).error, 1);
}

TEST(TableProfile, IsReadWithTheIntentOfThePicture) {
  const Bytes sRGB = named(kCGColorSpaceSRGB), cmyk = cmykTableProfile();
  for (const auto intent :
       {CGColorRenderingIntent::absoluteColorimetric, CGColorRenderingIntent::relativeColorimetric,
        CGColorRenderingIntent::perceptual, CGColorRenderingIntent::saturation})
    EXPECT_LE(errorOfDrawing(cmyk, sRGB, 8, 8, intent).error, 1) << static_cast<int>(intent);
}

TEST(TableProfile, HasTablesOfItsOwnForAnIntent) {
  const auto black = [](CGColorRenderingIntent intent) {
    return drawn({{0, 0, 0, 255},
                  8,
                  4,
                  CGImageAlphaInfo::none,
                  CGColorSpace::createWithICCData(cmykTableProfile()),
                  intent},
                 CGColorSpace::createWithName(kCGColorSpaceSRGB), 8, false)
        .at(0);
  };
  EXPECT_GT(black(CGColorRenderingIntent::perceptual), black(CGColorRenderingIntent::relativeColorimetric));
  EXPECT_EQ(black(CGColorRenderingIntent::perceptual), black(CGColorRenderingIntent::standard));
}

TEST(TableProfile, DoesNotGetItsBlackPointMatched) {
  // All inks at full strength are a dark gray in this profile, and stay one.
  const auto found = drawn(
      {{0, 0, 0, 255}, 8, 4, CGImageAlphaInfo::none, CGColorSpace::createWithICCData(cmykTableProfile())},
      CGColorSpace::createWithName(kCGColorSpaceSRGB), 8, false);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_GT(found.at(i), 25u);
}

TEST(TableProfile, KeepsAlpha) {
  const auto space = CGColorSpace::createWithICCData(rgbTableProfile());
  const auto sRGB = CGColorSpace::createWithName(kCGColorSpaceSRGB);
  const auto opaque = drawn({{200, 100, 50}, 8, 3, CGImageAlphaInfo::none, space}, sRGB, 8, false);
  const auto half = drawn({{200, 100, 50, 128}, 8, 4, CGImageAlphaInfo::last, space}, sRGB, 8, true);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(half.at(i), opaque.at(i) * 128 / 255.0, 1);
  EXPECT_EQ(half.at(3), 128u);
}

TEST(TableProfile, MeansTheSameToAnotherColorProgram) {
  OSTRA_NEEDS_PROGRAM("transicc");
  const TemporaryFolder folder;
  writeFile(folder.path("from"), cmykTableProfile());
  writeFile(folder.path("to"), gammaProfile(2.2, 2.1));
  const auto from = CGColorSpace::createWithICCData(readFile(folder.path("from")));
  const auto to = CGColorSpace::createWithICCData(readFile(folder.path("to")));
  for (const std::vector<unsigned>& inks :
       {std::vector<unsigned>{255, 0, 0, 0}, {0, 51, 102, 0}, {0, 0, 0, 204}}) {
    std::ostringstream percent;
    for (const unsigned ink : inks) percent << ink / 2.55 << "\n";
    const auto result =
        runProgram({"transicc", "-n", "-c0", "-t0", "-i" + folder.path("from"), "-o" + folder.path("to")},
                   {percent.str(), {}, false});
    ASSERT_EQ(result.status, 0) << result.errors;
    const auto found = drawn({inks, 8, 4, CGImageAlphaInfo::none, from}, to, 8, false);
    std::istringstream numbers(result.output);
    for (std::size_t i = 0; i < 3; ++i) {
      double wanted = -1;
      numbers >> wanted;
      EXPECT_NEAR(found.at(i), wanted, 1) << result.output;
    }
  }
}

TEST(CurveTables, ConvertAsTheColorLibraryDoes) {
  for (const int entries : {64, 256, 1024, 4096}) {
    const Bytes profile = curveTableProfile(entries);
    const Bytes sRGB = named(kCGColorSpaceSRGB), p3 = named(kCGColorSpaceDisplayP3);
    EXPECT_LE(errorOfDrawing(profile, p3, 8, 8).error, 1) << entries;
    EXPECT_LE(errorOfDrawing(sRGB, profile, 8, 8).error, 1) << entries;
    // At 16 bits the library's own reading of a table is a few steps coarse near black; the mean tells a
    // wrong curve.
    EXPECT_LE(errorOfDrawing(profile, p3, 16, 16).mean, 1) << entries;
    EXPECT_LE(errorOfDrawing(sRGB, profile, 16, 16).mean, 1) << entries;
  }
}

TEST(CurveTables, GiveTheLastOfSeveralBlacksAsTheColorLibraryDoes) {
  const Bytes profile = curveTableProfile(1024, 100), p3 = named(kCGColorSpaceDisplayP3);
  EXPECT_LE(errorOfDrawing(profile, p3, 8, 8).error, 1);
  EXPECT_LE(errorOfDrawing(p3, profile, 8, 8).error, 1);
  const auto space = CGColorSpace::createWithICCData(profile);
  const auto black = drawn({{0}, 8, 1, CGImageAlphaInfo::none, nullptr}, space, 8, false);
  EXPECT_NEAR(black.at(0), 255 * 100 / 1123.0, 1);
}

TEST(CurveTables, LeadBackToWhereTheyCameFrom) {
  for (const int entries : {16, 1024, 4096}) {
    const auto profile = CGColorSpace::createWithICCData(curveTableProfile(entries));
    const auto linear = CGColorSpace::createWithICCData(gammaProfile(1, 2.1));
    std::vector<unsigned> values;
    for (unsigned v = 0; v < 65536; v += 7) values.insert(values.end(), {v, v, v});
    const auto light = drawn({values, 16, 3, CGImageAlphaInfo::none, profile}, linear, 16, false);
    // One step of light is up to 13 steps of value at black; half of one is lost on the way.
    const auto back = drawn({light, 16, 4, CGImageAlphaInfo::noneSkipLast, linear}, profile, 16, false);
    for (std::size_t i = 0; i < values.size(); ++i)
      ASSERT_NEAR(back.at(i / 3 * 4 + i % 3), values[i], 8) << entries;
  }
}

TEST(InstalledProfiles, ConvertBothWaysAsTheColorLibraryDoes) {
  namespace fs = std::filesystem;
  const fs::path folder = "/usr/share/color/icc";
  if (!fs::exists(folder)) GTEST_SKIP() << "no profiles are installed under " << folder;
  const Bytes p3 = named(kCGColorSpaceDisplayP3);
  int seen = 0;
  for (const auto& entry :
       fs::recursive_directory_iterator(folder, fs::directory_options::follow_directory_symlink)) {
    const auto extension = entry.path().extension();
    if (extension != ".icc" && extension != ".icm") continue;
    const Bytes profile = readFile(entry.path());
    const auto space = CGColorSpace::createWithICCData(profile);
    if (!space ||
        (space->model() != CGColorSpaceModel::rgb && space->model() != CGColorSpaceModel::monochrome))
      continue;
    ++seen;
    EXPECT_LE(errorOfDrawing(profile, p3, 8, 8).error, 1) << entry.path();
    EXPECT_LE(errorOfDrawing(p3, profile, 8, 8).error, 1) << entry.path();
  }
  if (seen == 0) GTEST_SKIP() << "no RGB or gray profile is installed under " << folder;
}

}  // namespace
}  // namespace ostra::test
