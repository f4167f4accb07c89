#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>

#include <gtest/gtest.h>

#include "tests/platform/graphics/built_profiles.h"
#include "tests/platform/graphics/icc_evaluator.h"
#include "tests/platform/graphics/pictures.h"
#include "tests/platform/graphics/reference_colors.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

// How far the conversions are from the same profiles in double precision, over a grid of 33 steps a component
// and random colours. Profiles of curves are evaluated by their formulas, tables by the colour library in its
// floating-point numbers.

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kGrid = 33, kRandom = 4000;

double mostOf(std::size_t bits) { return bits == 8 ? 255 : 65535; }

struct Space {
  std::string name;
  Bytes profile;
  CGColorSpaceRef space;
  std::optional<IccEvaluator> evaluator;

  std::size_t components() const { return static_cast<std::size_t>(space->numberOfComponents()); }
};

std::optional<Space> spaceOf(const std::string& name, Bytes profile) {
  auto space = CGColorSpace::createWithICCData(profile);
  if (space == nullptr) return std::nullopt;
  auto evaluator = IccEvaluator::of(profile);
  return Space{name, std::move(profile), std::move(space), std::move(evaluator)};
}

std::vector<Space> allNamed() {
  std::vector<Space> spaces;
  for (const auto name : namedSpaces()) {
    const ByteView profile = CGColorSpace::createWithName(name)->iccData();
    spaces.push_back(*spaceOf(std::string(name), Bytes(profile.begin(), profile.end())));
  }
  return spaces;
}

/// Ten that differ in kind.
constexpr const char* kInstalled[] = {
    "colord/AdobeRGB1998.icc",        // version 4, a gamma
    "colord/ECI-RGBv2.icc",           // version 4, lightness as a formula with a toe
    "colord/Rec709.icc",              // version 4, 4096 entries
    "colord/SwappedRedAndGreen.icc",  // columns in another order
    "colord/WideGamutRGB.icc",        // primaries far outside the others
    "sRGB.icc",                       // version 2, 1024 entries, a white that is not D50
    "LStar-RGB.icc",                  // version 2, 256 entries
    "Gray.icc",                       // gray, a gamma
    "Gray-CIE_L.icc",                 // gray by lightness: the connection space is Lab
    "ITULab.icc",                     // tables, Lab
};

std::vector<Space> installed() {
  std::vector<Space> spaces;
  for (const char* name : kInstalled) {
    const fs::path path = fs::path("/usr/share/color/icc") / name;
    if (!fs::exists(path)) continue;
    if (auto space = spaceOf(name, readFile(path))) spaces.push_back(std::move(*space));
  }
  return spaces;
}

std::vector<unsigned> colorsOf(std::size_t components, std::size_t bits) {
  const auto most = static_cast<unsigned>(mostOf(bits));
  std::vector<unsigned> values;
  if (components == 1) {
    for (unsigned v = 0; v <= 4095; ++v) values.push_back(bits == 8 ? v % 256 : v * most / 4095);
    return values;
  }
  const std::size_t steps = components == 3 ? kGrid : 9;
  const auto all = static_cast<std::size_t>(std::llround(std::pow(steps, components)));
  for (std::size_t i = 0; i < all; ++i) {
    std::size_t rest = i;
    for (std::size_t c = 0; c < components; ++c, rest /= steps)
      values.push_back(static_cast<unsigned>(
          std::lround(static_cast<double>(rest % steps) * most / static_cast<double>(steps - 1))));
  }
  std::mt19937 random(19);
  for (std::size_t i = 0; i < kRandom * components; ++i)
    values.push_back(static_cast<unsigned>(random() % (most + 1)));
  return values;
}

/// Colours of a source, and what they are in the connection space: the same for all its destinations.
struct SourceColors {
  std::vector<unsigned> values;
  std::vector<double> fractions;
  std::vector<IccEvaluator::XYZ> xyz;

  SourceColors(const Space& source, std::size_t bits) : values(colorsOf(source.components(), bits)) {
    for (const unsigned value : values) fractions.push_back(value / mostOf(bits));
    for (std::size_t i = 0; source.evaluator && i < fractions.size(); i += source.components())
      xyz.push_back(source.evaluator->toXYZ(&fractions[i]));
  }

  std::vector<double> in(const Space& source, const Space& destination) const {
    if (!source.evaluator || !destination.evaluator)
      return convertByLibrary(source.profile, destination.profile, fractions);
    std::vector<double> wanted(xyz.size() * destination.components());
    for (std::size_t i = 0; i < xyz.size(); ++i)
      destination.evaluator->fromXYZ(xyz[i], &wanted[i * destination.components()]);
    return wanted;
  }
};

struct Error {
  double worst = 0, sum = 0;
  std::size_t samples = 0;

  void take(double error) {
    worst = std::max(worst, error);
    sum += error;
    ++samples;
  }
  void take(const Error& other) {
    worst = std::max(worst, other.worst);
    sum += other.sum;
    samples += other.samples;
  }
  double mean() const { return samples == 0 ? 0 : sum / static_cast<double>(samples); }
};

Error errorOf(const SourceColors& colors, const Space& source, const Space& destination, std::size_t bits) {
  const auto found = drawn({colors.values, bits, source.components(), CGImageAlphaInfo::none, source.space},
                           destination.space, bits, false);
  const auto wanted = colors.in(source, destination);
  const std::size_t n = destination.components(), stored = n == 3 ? 4 : n;
  Error error;
  EXPECT_EQ(found.size() / stored, wanted.size() / n);
  for (std::size_t i = 0; i < wanted.size() && i / n * stored + i % n < found.size(); ++i)
    error.take(std::abs(found[i / n * stored + i % n] - std::round(wanted[i] * mostOf(bits))));
  return error;
}

bool isDestination(const Space& space) {
  return space.space->model() == CGColorSpaceModel::rgb ||
         space.space->model() == CGColorSpaceModel::monochrome;
}

/// Every source to every destination but itself; prints the largest and the mean error, and fails beyond the
/// tolerance.
void expectPrecise(const char* what, const std::vector<Space>& sources,
                   const std::vector<Space>& destinations) {
  for (const std::size_t bits : {std::size_t{8}, std::size_t{16}}) {
    const double tolerance = bits == 8 ? 1 : 2;
    Error all;
    std::size_t pairs = 0;
    for (const Space& source : sources) {
      const SourceColors colors(source, bits);
      for (const Space& destination : destinations) {
        if (!isDestination(destination) || source.name == destination.name) continue;
        const Error error = errorOf(colors, source, destination, bits);
        EXPECT_LE(error.worst, tolerance)
            << source.name << " to " << destination.name << " at " << bits << " bits, mean " << error.mean();
        all.take(error);
        ++pairs;
      }
    }
    std::printf("  %-28s %4zu pairs, %2zu bits, %10zu samples: largest error %g, mean %.4f\n", what, pairs,
                bits, all.samples, all.worst, all.mean());
    EXPECT_GT(pairs, 0u);
  }
}

TEST(Precision, OfEveryPairOfNamedSpacesIsThatOfDoubleNumbers) {
  expectPrecise("named to named", allNamed(), allNamed());
}

TEST(Precision, OfInstalledProfilesIsThatOfDoubleNumbers) {
  const auto profiles = installed();
  if (profiles.size() < std::size(kInstalled)) {
    if (inContinuousIntegration()) FAIL() << "colord-data or icc-profiles-free is not installed";
    GTEST_SKIP() << "colord-data or icc-profiles-free is not installed";
  }
  expectPrecise("installed to named", profiles, allNamed());
  expectPrecise("named to installed", allNamed(), profiles);
  expectPrecise("installed to installed", profiles, profiles);
}

TEST(Precision, OfTablesIsThatOfTheColorLibrarysFloats) {
  const std::vector<Space> tables = {*spaceOf("RGB table", rgbTableProfile()),
                                     *spaceOf("CMYK table", cmykTableProfile())};
  expectPrecise("tables to named", tables, allNamed());
  expectPrecise("named to tables", allNamed(), tables);
}

TEST(Precision, OfTheCorpusProfilesIsThatOfDoubleNumbers) {
  const char* folder = std::getenv("OSTRA_CORPUS");
  if (folder == nullptr) GTEST_SKIP() << "OSTRA_CORPUS names no folder of pictures";
  std::vector<Space> profiles;
  for (const auto& entry : fs::directory_iterator(fs::path(folder) / "icc"))
    if (auto space = spaceOf(entry.path().filename(), readFile(entry.path())))
      profiles.push_back(std::move(*space));
  std::vector<Space> few;
  for (Space& space : allNamed())
    if (space.name == kCGColorSpaceSRGB || space.name == kCGColorSpaceROMMRGB || isGray(space.name))
      few.push_back(std::move(space));
  expectPrecise("corpus to named", profiles, few);
  expectPrecise("named to corpus", few, profiles);
}

// The oracle is an oracle only where it agrees with others: with the library's floats on a profile of its
// own, and with the numbers of the published spaces.
TEST(PrecisionOracle, AgreesWithTheColorLibraryAndWithThePublishedNumbers) {
  const Space gamma = *spaceOf("gamma", gammaProfile(1.8, 2.1)), p3 = allNamed()[1];
  const SourceColors colors(p3, 16);
  const auto one = colors.in(p3, gamma),
             other = convertByLibrary(p3.profile, gamma.profile, colors.fractions);
  for (std::size_t i = 0; i < one.size(); ++i) ASSERT_NEAR(one[i], other[i], 1e-4);
  for (std::size_t i = 0; i < 3000; i += 3) {
    const auto published =
        convertByNumbers(kCGColorSpaceDisplayP3, kCGColorSpaceAdobeRGB1998,
                         {colors.fractions[i], colors.fractions[i + 1], colors.fractions[i + 2]});
    double found[3];
    allNamed()[2].evaluator->fromXYZ(p3.evaluator->toXYZ(&colors.fractions[i]), found);
    for (std::size_t c = 0; c < 3; ++c) ASSERT_NEAR(found[c], published[c], 1e-9);
  }
}

}  // namespace
}  // namespace ostra::test
