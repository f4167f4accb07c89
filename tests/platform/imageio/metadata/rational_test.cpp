#include "platform/imageio/metadata/rational.h"

#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace ostra {

namespace {
constexpr std::int64_t kUnsigned = std::numeric_limits<std::uint32_t>::max();
}

TEST(Rational, KeepsShortFractionsShort) {
  for (const auto& [n, d] :
       {std::pair{1, 60}, {28, 10}, {1, 8000}, {-2, 3}, {0, 1}, {300, 1}, {45455, 100000}}) {
    const auto fraction = rationalFrom(static_cast<double>(n) / d, kUnsigned);
    ASSERT_TRUE(fraction);
    EXPECT_EQ(fraction->numerator * d, fraction->denominator * n);
    EXPECT_LE(fraction->denominator, d);
  }
}

TEST(Rational, NeverLeavesItsRange) {
  std::mt19937_64 random(4711);
  for (const std::int64_t largest : {kUnsigned, std::int64_t{0x7FFFFFFF}}) {
    for (int i = 0; i < 20000; ++i) {
      const double value =
          std::ldexp(static_cast<double>(random() >> 11), static_cast<int>(random() % 90) - 80);
      const auto fraction = rationalFrom(value, largest);
      if (value > static_cast<double>(largest)) {
        EXPECT_FALSE(fraction);
        continue;
      }
      ASSERT_TRUE(fraction) << value;
      EXPECT_GE(fraction->numerator, 0);
      EXPECT_LE(fraction->numerator, largest);
      EXPECT_GE(fraction->denominator, 1);
      EXPECT_LE(fraction->denominator, largest);
      const double read =
          static_cast<double>(fraction->numerator) / static_cast<double>(fraction->denominator);
      EXPECT_NEAR(read, value, std::max(1e-9, value * 0.5)) << value;
    }
  }
}

TEST(Rational, ReadsBackEveryFractionOfSixteenBits) {
  std::mt19937 random(4712);
  for (int i = 0; i < 20000; ++i) {
    const double value = static_cast<double>(random() % 65536) / static_cast<double>(1 + random() % 65535);
    const auto fraction = rationalFrom(value, kUnsigned);
    ASSERT_TRUE(fraction);
    EXPECT_EQ(static_cast<double>(fraction->numerator) / static_cast<double>(fraction->denominator), value);
  }
}

TEST(Rational, RefusesWhatIsNoNumber) {
  EXPECT_FALSE(rationalFrom(std::numeric_limits<double>::quiet_NaN(), kUnsigned));
  EXPECT_FALSE(rationalFrom(std::numeric_limits<double>::infinity(), kUnsigned));
  EXPECT_FALSE(rationalFrom(-1e300, kUnsigned));
}

}  // namespace ostra
