#include "platform/graphics/encode_table.h"

#include <algorithm>
#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "platform/graphics/icc_check.h"
#include "tests/platform/graphics/built_profiles.h"

namespace ostra::test {
namespace {

ToneCurve power(double gamma) {
  ToneCurve curve;
  curve.g = gamma;
  return curve;
}

ToneCurve withToe(double g, double a, double b, double c, double d) {
  ToneCurve curve;
  curve.g = g, curve.a = a, curve.b = b, curve.c = c, curve.d = d;
  return curve;
}

ToneCurve stored(int entries) {
  const Bytes profile = curveTableProfile(entries);
  return *ToneCurve::ofTag(CheckedProfile::of(profile)->tag(iccSignature("rTRC")));
}

/// All octaves of light, each at uneven steps.
std::vector<float> lights() {
  std::vector<float> values = {0.0f, 1.0f, -0.5f, 1.5f, 1e-30f};
  for (float light = 1.0f; light > 1e-14f; light *= 0.99973f) values.push_back(light);
  for (int i = 0; i <= 65535; ++i) values.push_back(static_cast<float>(i) / 65535.0f);
  return values;
}

TEST(EncodeTable, IsTheInverseCurveWithinLessThanA16BitStep) {
  const std::pair<const char*, ToneCurve> curves[] = {
      {"sRGB", withToe(2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045)},
      {"a toe that does not meet its curve", withToe(1.8, 1, 0, 1.0 / 16, 1.0 / 512)},
      {"lightness", withToe(3, 1 / 1.16, 0.16 / 1.16, 0.1107, 0.08)},
      {"1", power(1)},
      {"1.8", power(1.8)},
      {"2.6", power(2.6)},
      {"0.45", power(0.45)},
      {"16 entries", stored(16)},
      {"1024 entries", stored(1024)},
      {"4096 entries", stored(4096)}};
  for (const auto& [name, curve] : curves) {
    const EncodeTable table(curve);
    std::vector<float> fast = lights(), plain = fast;
    table.run(fast.data(), fast.size());
    table.runPlainly(plain.data(), plain.size());
    const auto asked = lights();
    for (std::size_t i = 0; i < asked.size(); ++i) {
      const double wanted = 65535 * curve.encode(std::clamp(static_cast<double>(asked[i]), 0.0, 1.0));
      ASSERT_NEAR(65535.0 * fast[i], wanted, 0.75) << name << " at " << asked[i];
      ASSERT_NEAR(65535.0 * plain[i], wanted, 0.75) << name << " at " << asked[i];
    }
  }
}

TEST(ToneCurve, GoesThereAndBack) {
  for (const ToneCurve& curve :
       {power(2.2), withToe(2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045), stored(1024)})
    for (int i = 0; i <= 1000; ++i) EXPECT_NEAR(curve.encode(curve.decode(i / 1000.0)), i / 1000.0, 1e-9);
}

Bytes tag(std::initializer_list<int> bytes) {
  Bytes result;
  for (const int byte : bytes) result.push_back(static_cast<std::uint8_t>(byte));
  return result;
}

TEST(ToneCurve, OfATagThatIsMalformedOrFallsIsNone) {
  const auto isCurve = [](const Bytes& bytes) { return ToneCurve::ofTag(bytes).has_value(); };
  EXPECT_TRUE(isCurve(tag({'c', 'u', 'r', 'v', 0, 0, 0, 0, 0, 0, 0, 0})));
  EXPECT_TRUE(isCurve(tag({'c', 'u', 'r', 'v', 0, 0, 0, 0, 0, 0, 0, 1, 2, 0})));
  EXPECT_TRUE(isCurve(tag({'c', 'u', 'r', 'v', 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 255, 255})));
  EXPECT_FALSE(isCurve(tag({'c', 'u', 'r', 'v', 0, 0, 0, 0, 0, 0, 0, 2, 255, 255, 0, 0}))) << "falls";
  EXPECT_FALSE(isCurve(tag({'c', 'u', 'r', 'v', 0, 0, 0, 0, 0, 0, 0, 2, 9, 9, 9, 9}))) << "is flat";
  EXPECT_FALSE(isCurve(tag({'c', 'u', 'r', 'v', 0, 0, 0, 0, 0, 0, 0, 1, 0, 0}))) << "a power of zero";
  EXPECT_FALSE(isCurve(tag({'c', 'u', 'r', 'v', 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 255, 255}))) << "cut";
  EXPECT_FALSE(isCurve(tag({'c', 'u', 'r', 'v', 0, 0, 0, 0, 255, 255, 255, 255, 0, 0}))) << "cut";
  EXPECT_TRUE(isCurve(tag({'p', 'a', 'r', 'a', 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0})));
  EXPECT_FALSE(isCurve(tag({'p', 'a', 'r', 'a', 0, 0, 0, 0, 0, 9, 0, 0, 0, 2, 0, 0}))) << "an unknown form";
  EXPECT_FALSE(isCurve(tag({'p', 'a', 'r', 'a', 0, 0, 0, 0, 0, 3, 0, 0, 0, 2, 0, 0}))) << "cut";
  EXPECT_FALSE(isCurve(tag({'s', 'f', '3', '2', 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0})));
  EXPECT_FALSE(isCurve(tag({'p', 'a', 'r', 'a'})));
  EXPECT_FALSE(isCurve({}));
}

}  // namespace
}  // namespace ostra::test
