#include "platform/graphics/calibrated_space.h"

#include <algorithm>
#include <cmath>

namespace ostra {
namespace {

/// Imaginary primaries are in use, but none lies far outside the diagram.
bool areChromaticities(const std::array<double, 6>& primaries) {
  return std::all_of(primaries.begin(), primaries.end(), [](double value) { return std::abs(value) <= 2; });
}

/// Columns of the XYZ of red, green and blue at full strength, which add up to the white; adapted to D50.
std::optional<Matrix3> colorantMatrix(const std::array<double, 2>& white,
                                      const std::array<double, 6>& primaries) {
  if (!areChromaticities(primaries)) return std::nullopt;
  const auto adaptation = adaptationToD50(white);
  Matrix3 columns{};
  for (std::size_t i = 0; i < 3; ++i) {
    const double x = primaries[2 * i], y = primaries[2 * i + 1];
    columns[0][i] = x, columns[1][i] = y, columns[2][i] = 1 - x - y;
  }
  const auto solved = inverse(columns);
  if (!adaptation || !solved) return std::nullopt;
  const std::array<double, 3> whiteXYZ = {white[0] / white[1], 1, (1 - white[0] - white[1]) / white[1]};
  for (std::size_t i = 0; i < 3; ++i) {
    const double strength =
        (*solved)[i][0] * whiteXYZ[0] + (*solved)[i][1] * whiteXYZ[1] + (*solved)[i][2] * whiteXYZ[2];
    for (auto& row : columns) row[i] *= strength;
  }
  return product(*adaptation, columns);
}

}  // namespace

std::optional<std::array<std::int32_t, 9>> colorantsOf(const std::array<double, 2>& white,
                                                       const std::array<double, 6>& primaries) {
  constexpr double mostThatMakesSense = 16;
  const auto matrix = colorantMatrix(white, primaries);
  if (!matrix) return std::nullopt;
  std::array<std::int32_t, 9> words{};
  for (std::size_t i = 0; i < 9; ++i) {
    const double value = (*matrix)[i % 3][i / 3];
    if (!(std::abs(value) < mostThatMakesSense)) return std::nullopt;
    words[i] = fixedWord(value);
  }
  return words;
}

CGColorSpaceRef CGColorSpace::createCalibrated(const double (&white)[2], const double (*primaries)[6],
                                               double gamma) {
  constexpr double steepest = 100;
  if (!(gamma > 1 / steepest) || !(gamma < steepest) || !adaptationToD50({white[0], white[1]}))
    return nullptr;
  ProfileNumbers numbers;
  numbers.description = primaries != nullptr ? "Calibrated RGB" : "Calibrated Gray";
  numbers.curve[0] = fixedWord(gamma);
  numbers.white = {white[0], white[1]};
  if (primaries != nullptr) {
    std::array<double, 6> chromaticities{};
    std::copy(*primaries, *primaries + 6, chromaticities.begin());
    numbers.colorants = colorantsOf(numbers.white, chromaticities);
    if (!numbers.colorants) return nullptr;
  }
  return createWithICCData(writeProfile(numbers));
}

}  // namespace ostra
