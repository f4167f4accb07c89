#include <algorithm>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "tests/platform/graphics/pictures.h"
#include "tests/platform/graphics/reference_colors.h"

namespace ostra::test {
namespace {

double mostOf(std::size_t bits) { return bits == 8 ? 255 : 65535; }
/// Code values by which a conversion may miss the same in double precision.
double toleranceOf(std::size_t bits) { return bits == 8 ? 1 : 2; }

/// Dark and bright ends, and random colours between.
std::vector<unsigned> someColors(std::size_t components, std::size_t bits) {
  const auto most = static_cast<unsigned>(mostOf(bits));
  std::vector<unsigned> values;
  for (unsigned v = 0; v < 512; ++v)
    for (std::size_t c = 0; c < components; ++c) {
      values.push_back(v < 256 ? std::min(v, most) : most - std::min(v - 256, most));
    }
  std::mt19937 random(7);
  std::uniform_int_distribution<unsigned> anyValue(0, most), anyShift(0, bits == 8 ? 6 : 14);
  for (std::size_t i = 0; i < 2000; ++i) {
    const unsigned darker = anyShift(random);
    for (std::size_t c = 0; c < components; ++c) values.push_back(anyValue(random) >> darker);
  }
  return values;
}

std::size_t componentsOf(std::string_view name) { return isGray(name) ? 1 : 3; }

struct Depths {
  std::size_t from, to;
};

class EveryPairOfSpaces : public testing::TestWithParam<Depths> {};

TEST_P(EveryPairOfSpaces, ConvertsAsDoublePrecisionDoes) {
  const auto [fromBits, toBits] = GetParam();
  for (const auto from : namedSpaces())
    for (const auto to : namedSpaces()) {
      const std::size_t n = componentsOf(from), m = componentsOf(to), stored = m == 1 ? 1 : 4;
      const auto colors = someColors(n, fromBits);
      const auto found =
          drawn({colors, fromBits, n, CGImageAlphaInfo::none, CGColorSpace::createWithName(from)},
                CGColorSpace::createWithName(to), toBits, false);
      double worst = 0;
      std::string where;
      for (std::size_t i = 0; i < colors.size() / n; ++i) {
        Values values;
        for (std::size_t c = 0; c < n; ++c) values.push_back(colors[i * n + c] / mostOf(fromBits));
        const Values wanted = convertByNumbers(from, to, values);
        for (std::size_t c = 0; c < m; ++c) {
          const double error = std::abs(found.at(i * stored + c) - std::round(wanted[c] * mostOf(toBits)));
          if (error > worst) {
            worst = error;
            where = "colour " + std::to_string(i) + " of value " + std::to_string(colors[i * n + c]);
          }
        }
      }
      EXPECT_LE(worst, toleranceOf(toBits)) << from << " to " << to << ", " << where;
    }
}

INSTANTIATE_TEST_SUITE_P(Depths, EveryPairOfSpaces,
                         testing::Values(Depths{8, 8}, Depths{16, 16}, Depths{8, 16}, Depths{16, 8}),
                         [](const auto& test) {
                           return std::to_string(test.param.from) + "To" + std::to_string(test.param.to);
                         });

TEST(RepeatedConversions, OfOnePairOfSpacesDoNotMixTheirDepths) {
  const auto from = CGColorSpace::createWithName(kCGColorSpaceAdobeRGB1998);
  const auto to = CGColorSpace::createWithName(kCGColorSpaceDCIP3);
  const Values wanted = convertByNumbers(kCGColorSpaceAdobeRGB1998, kCGColorSpaceDCIP3, {0.2, 0.4, 0.6});
  for (int round = 0; round < 2; ++round) {
    const auto bytes = drawn({{51, 102, 153}, 8, 3, CGImageAlphaInfo::none, from}, to, 16, false);
    const auto words = drawn({{13107, 26214, 39321}, 16, 3, CGImageAlphaInfo::none, from}, to, 16, false);
    const auto half =
        drawn({{32, 64, 96, 160}, 8, 4, CGImageAlphaInfo::premultipliedLast, from}, to, 8, true);
    for (std::size_t c = 0; c < 3; ++c) {
      EXPECT_NEAR(bytes.at(c), 65535 * wanted[c], 2);
      EXPECT_NEAR(words.at(c), 65535 * wanted[c], 2);
      EXPECT_NEAR(half.at(c), 160 * wanted[c], 1);
    }
  }
}

struct AlphaCase {
  std::size_t bits;
  CGImageAlphaInfo alpha;
  bool overWhite;
};

class TransparentColors : public testing::TestWithParam<AlphaCase> {};

std::vector<unsigned> someAlphas(std::size_t bits) {
  if (bits == 8) return {0, 1, 2, 127, 128, 254, 255};
  return {0, 1, 2, 255, 32768, 65534, 65535};
}

/// RGBA pixels, premultiplied ones with no colour above its alpha.
std::vector<unsigned> somePixels(std::size_t bits, bool premultiplied) {
  std::vector<unsigned> pixels;
  const auto colors = someColors(3, bits);
  for (const unsigned alpha : someAlphas(bits))
    for (std::size_t i = 0; i + 2 < colors.size(); i += 15) {
      for (std::size_t c = 0; c < 3; ++c)
        pixels.push_back(premultiplied
                             ? static_cast<unsigned>(std::round(colors[i + c] * (alpha / mostOf(bits))))
                             : colors[i + c]);
      pixels.push_back(alpha);
    }
  return pixels;
}

/// The pixel as it should lie on the surface: un-premultiplied, converted, multiplied, over white or nothing.
Values wantedPixel(const unsigned* pixel, const AlphaCase& how, std::string_view from, std::string_view to) {
  const double most = mostOf(how.bits), alpha = pixel[3] / most;
  Values straight;
  for (int c = 0; c < 3; ++c) {
    const double value = pixel[c] / most;
    if (how.alpha == CGImageAlphaInfo::last)
      straight.push_back(value);
    else
      straight.push_back(pixel[3] == 0 ? 0 : value / alpha);
  }
  Values result = convertByNumbers(from, to, straight);
  for (double& value : result) value = value * alpha + (how.overWhite ? 1 - alpha : 0);
  if (result.size() == 3) result.push_back(how.overWhite ? 1 : alpha);
  return result;
}

TEST_P(TransparentColors, AreConvertedBeforeTheyAreMultiplied) {
  const AlphaCase how = GetParam();
  const auto pixels = somePixels(how.bits, how.alpha == CGImageAlphaInfo::premultipliedLast);
  for (const auto from : {kCGColorSpaceSRGB, kCGColorSpaceDCIP3, kCGColorSpaceLinearSRGB})
    for (const auto to : namedSpaces()) {
      const auto space = CGColorSpace::createWithName(to);
      const Picture picture{pixels, how.bits, 4, how.alpha, CGColorSpace::createWithName(from)};
      const auto found =
          how.overWhite ? drawnOverWhite(picture, space, how.bits) : drawn(picture, space, how.bits, true);
      const std::size_t stored = isGray(to) ? 1 : 4;
      for (std::size_t i = 0; i < pixels.size() / 4; ++i) {
        const Values wanted = wantedPixel(&pixels[4 * i], how, from, to);
        for (std::size_t c = 0; c < stored; ++c)
          ASSERT_NEAR(found.at(i * stored + c), std::round(wanted[c] * mostOf(how.bits)),
                      toleranceOf(how.bits))
              << from << " to " << to << ", component " << c << " of " << pixels[4 * i] << " "
              << pixels[4 * i + 1] << " " << pixels[4 * i + 2] << " " << pixels[4 * i + 3];
      }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Alpha, TransparentColors,
    testing::Values(AlphaCase{8, CGImageAlphaInfo::last, false}, AlphaCase{8, CGImageAlphaInfo::last, true},
                    AlphaCase{8, CGImageAlphaInfo::premultipliedLast, false},
                    AlphaCase{8, CGImageAlphaInfo::premultipliedLast, true},
                    AlphaCase{16, CGImageAlphaInfo::last, false}, AlphaCase{16, CGImageAlphaInfo::last, true},
                    AlphaCase{16, CGImageAlphaInfo::premultipliedLast, false},
                    AlphaCase{16, CGImageAlphaInfo::premultipliedLast, true}),
    [](const auto& test) {
      return std::to_string(test.param.bits) + "Bits" +
             (test.param.alpha == CGImageAlphaInfo::last ? "Straight" : "Premultiplied") +
             (test.param.overWhite ? "OverWhite" : "OverNothing");
    });

}  // namespace
}  // namespace ostra::test
