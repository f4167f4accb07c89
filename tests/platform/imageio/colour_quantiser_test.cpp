#include "platform/imageio/codecs/colour_quantiser.h"

#include <algorithm>
#include <random>
#include <set>

#include <gtest/gtest.h>

namespace ostra::test {
namespace {

Rgb randomColour(std::mt19937& random) {
  return {static_cast<std::uint8_t>(random()), static_cast<std::uint8_t>(random()),
          static_cast<std::uint8_t>(random())};
}

std::vector<Rgb> randomPalette(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<Rgb> palette(size);
  for (Rgb& colour : palette) colour = randomColour(random);
  return palette;
}

int distance(const Rgb& a, const Rgb& b) {
  int sum = 0;
  for (std::size_t c = 0; c < 3; ++c) sum += (a[c] - b[c]) * (a[c] - b[c]);
  return sum;
}

TEST(NearestColour, IsTheFirstOfTheNearestOfAllEntries) {
  for (const std::size_t size : {1u, 2u, 17u, 256u}) {
    const auto palette = randomPalette(size, static_cast<unsigned>(size));
    NearestColour nearest(palette);
    std::mt19937 random(5);
    for (int i = 0; i < 5000; ++i) {
      const Rgb colour = randomColour(random);
      const auto expected = std::min_element(palette.begin(), palette.end(), [&](const Rgb& a, const Rgb& b) {
        return distance(a, colour) < distance(b, colour);
      });
      ASSERT_EQ(nearest(colour), expected - palette.begin());
    }
  }
}

TEST(ColourHistogram, CountsFewColoursExactlyInAFixedOrder) {
  ColourHistogram one, other;
  const auto palette = randomPalette(1000, 3);
  for (const Rgb& colour : palette) one.add(colour);
  for (auto colour = palette.rbegin(); colour != palette.rend(); ++colour) other.add(*colour);
  one.add(palette[7]);
  other.add(palette[7]);
  const auto counts = one.counts(), others = other.counts();
  ASSERT_EQ(counts.size(), others.size());
  std::uint64_t pixels = 0;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    EXPECT_EQ(counts[i].colour, others[i].colour);
    EXPECT_EQ(counts[i].pixels, others[i].pixels);
    pixels += counts[i].pixels;
  }
  EXPECT_EQ(pixels, 1001u);
}

TEST(ColourHistogram, JoinsNeighboursOfManyColours) {
  ColourHistogram histogram;
  std::mt19937 random(4);
  for (int i = 0; i < 300'000; ++i) histogram.add(randomColour(random));
  std::uint64_t pixels = 0;
  std::set<Rgb> cubes;
  for (const ColourCount& count : histogram.counts()) {
    pixels += count.pixels;
    cubes.insert({static_cast<std::uint8_t>(count.colour[0] >> 2),
                  static_cast<std::uint8_t>(count.colour[1] >> 2),
                  static_cast<std::uint8_t>(count.colour[2] >> 2)});
  }
  EXPECT_EQ(pixels, 300'000u);
  EXPECT_EQ(cubes.size(), histogram.counts().size()) << "one mean a cube, inside it";
}

TEST(ColourQuantiser, KeepsColoursThatHaveRoom) {
  ColourHistogram histogram;
  const auto palette = randomPalette(256, 9);
  for (const Rgb& colour : palette) histogram.add(colour);
  const auto chosen = quantisedPalette(histogram.counts(), 256);
  EXPECT_EQ(std::set<Rgb>(chosen.begin(), chosen.end()), std::set<Rgb>(palette.begin(), palette.end()));
}

// Of one colour too many, the two that are nearest (and rarest) share an entry.
TEST(ColourQuantiser, JoinsTheNearestOfOneTooMany) {
  ColourHistogram histogram;
  auto palette = randomPalette(255, 11);
  const Rgb twin = {palette[0][0], static_cast<std::uint8_t>(palette[0][1] ^ 1), palette[0][2]};
  for (const Rgb& colour : palette) {
    for (int i = 0; i < 9; ++i) histogram.add(colour);
  }
  histogram.add(twin);
  const auto chosen = quantisedPalette(histogram.counts(), 255);
  EXPECT_EQ(std::set<Rgb>(chosen.begin(), chosen.end()), std::set<Rgb>(palette.begin(), palette.end()));
}

TEST(ColourQuantiser, GivesTheMeanWhereThereIsOneEntry) {
  EXPECT_EQ(quantisedPalette({{{0, 0, 0}, 3}, {{100, 200, 40}, 1}}, 1), (std::vector<Rgb>{{25, 50, 10}}));
  EXPECT_EQ(quantisedPalette({}, 5).size(), 1u);
}

TEST(ColourQuantiser, KeepsGraysGray) {
  ColourHistogram histogram;
  for (int i = 0; i < 256; ++i) {
    const auto level = static_cast<std::uint8_t>(i);
    histogram.add({level, level, level});
  }
  for (const Rgb& colour : quantisedPalette(histogram.counts(), 37))
    EXPECT_TRUE(colour[0] == colour[1] && colour[1] == colour[2]);
}

}  // namespace
}  // namespace ostra::test
