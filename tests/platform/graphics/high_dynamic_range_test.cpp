#include "platform/graphics/high_dynamic_range.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {
namespace {

// Light as a fraction of the same white, by a library that leaves highlights as they are.
std::vector<float> lightByFfmpeg(const std::string& transfer) {
  constexpr std::size_t kSamples = 1024, kRows = 2, kPlanes = 3;
  Bytes ramp;
  for (std::size_t row = 0; row < kRows * kPlanes; ++row)
    for (std::size_t i = 0; i < kSamples; ++i) {
      const auto value = static_cast<std::uint16_t>((i * 65535 + 511) / 1023);
      ramp.insert(ramp.end(), {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)});
    }
  const TemporaryFolder folder;
  writeFile(folder.path("ramp"), ramp);
  const std::string how =
      "zscale=primariesin=bt2020:matrixin=gbr:rangein=full:primaries=bt2020:matrix=gbr:transfer=linear:npl="
      "203:"
      "transferin=" +
      transfer + ",format=gbrpf32le";
  const ProgramResult result =
      runProgram({"ffmpeg", "-v", "error", "-f", "rawvideo", "-pix_fmt", "gbrp16le", "-s", "1024x2", "-i",
                  folder.path("ramp"), "-vf", how, "-f", "rawvideo", folder.path("light")});
  EXPECT_EQ(result.status, 0) << result.errors;
  const Bytes bytes = readFile(folder.path("light"));
  std::vector<float> light(kSamples);
  if (bytes.size() < kSamples * sizeof(float)) return {};
  std::memcpy(light.data(), bytes.data(), kSamples * sizeof(float));
  return light;
}

struct Signal {
  const char* name;
  std::vector<std::uint16_t> (*curve)();
};

class HighDynamicRange : public testing::TestWithParam<Signal> {};

TEST_P(HighDynamicRange, LeavesLightAsItIsBelowTheKnee) {
  OSTRA_NEEDS_PROGRAM("ffmpeg");
  constexpr double kKnee = 91.0 / 203;
  const auto curve = GetParam().curve();
  const auto light = lightByFfmpeg(GetParam().name);
  ASSERT_EQ(light.size(), curve.size());
  std::size_t compared = 0;
  for (std::size_t i = 0; i < light.size() && light[i] < kKnee; ++i, ++compared) {
    // The library reckons in numbers of 24 bits, with tables for the powers.
    EXPECT_NEAR(curve[i] / 65535.0, light[i], 1e-5 + light[i] * 5e-4) << i;
  }
  EXPECT_GT(compared, 500U);
}

TEST_P(HighDynamicRange, NeverFallsAndEndsAtWhite) {
  const auto curve = GetParam().curve();
  EXPECT_EQ(curve.size(), 1024U);
  EXPECT_EQ(curve.front(), 0);
  EXPECT_EQ(curve.back(), 65535);
  EXPECT_TRUE(std::is_sorted(curve.begin(), curve.end()));
}

INSTANTIATE_TEST_SUITE_P(Signals, HighDynamicRange,
                         testing::Values(Signal{"smpte2084", perceptualQuantizerCurve},
                                         Signal{"arib-std-b67", hybridLogGammaCurve}),
                         [](const auto& param) {
                           return std::string(param.index == 0 ? "PerceptualQuantizer" : "HybridLogGamma");
                         });

// ITU-R BT.2390, 5.4.1, for white at 203 cd/m² and a peak of 1,000 cd/m², reckoned elsewhere.
TEST(HighDynamicRangeLight, ComesUnderWhiteAsTheReportBendsIt) {
  struct Row {
    std::size_t index;
    double quantizer, hybrid;
  };
  const auto quantizer = perceptualQuantizerCurve(), hybrid = hybridLogGammaCurve();
  for (const Row& row : {Row{400, 9486.6, 9071.4}, Row{520, 32143.4, 17037.0}, Row{594, 51334.2, 24668.1},
                         Row{660, 61791.8, 34629.9}, Row{720, 65184.8, 44328.9}, Row{767, 65535.0, 51326.7},
                         Row{850, 65535.0, 60527.5}, Row{1000, 65535.0, 65522.0}}) {
    EXPECT_NEAR(quantizer[row.index], row.quantizer, 1) << row.index;
    EXPECT_NEAR(hybrid[row.index], row.hybrid, 1) << row.index;
  }
}

}  // namespace
}  // namespace ostra::test
