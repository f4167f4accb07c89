#include "platform/graphics/code_points.h"

#include <algorithm>
#include <iterator>

#include "platform/graphics/calibrated_space.h"
#include "platform/graphics/high_dynamic_range.h"
#include "platform/graphics/named_spaces.h"

namespace ostra {
namespace {

constexpr std::array<double, 2> d65 = {0.3127, 0.3290}, c = {0.310, 0.316}, theatre = {0.314, 0.351};

/// ITU-T H.273, table 2.
struct PrimariesRow {
  unsigned number;
  std::array<double, 2> white;
  std::array<double, 6> primaries;
};
constexpr PrimariesRow primariesRows[] = {
    {1, d65, {0.640, 0.330, 0.300, 0.600, 0.150, 0.060}},
    {4, c, {0.67, 0.33, 0.21, 0.71, 0.14, 0.08}},
    {5, d65, {0.640, 0.330, 0.290, 0.600, 0.150, 0.060}},
    {6, d65, {0.630, 0.340, 0.310, 0.595, 0.155, 0.070}},
    {7, d65, {0.630, 0.340, 0.310, 0.595, 0.155, 0.070}},
    {8, c, {0.681, 0.319, 0.243, 0.692, 0.145, 0.049}},
    {9, d65, {0.708, 0.292, 0.170, 0.797, 0.131, 0.046}},
    {11, theatre, {0.680, 0.320, 0.265, 0.690, 0.150, 0.060}},
    {12, d65, {0.680, 0.320, 0.265, 0.690, 0.150, 0.060}},
    {22, d65, {0.630, 0.340, 0.295, 0.605, 0.155, 0.077}},
};

/// ITU-T H.273, table 3, from stored value to light. Cameras' curves are undone as they were applied, as
/// profiles of those spaces do.
struct TransferRow {
  unsigned number;
  bool toe;
  std::array<std::int32_t, 5> curve;
};
constexpr std::array<std::int32_t, 5> cameraCurve = {0x238E4, 0xE8F0, 0x1710, 0x38E4, 0x14BC};
constexpr TransferRow transferRows[] = {
    {1, true, cameraCurve},  {6, true, cameraCurve},
    {14, true, cameraCurve}, {15, true, cameraCurve},
    {4, false, {0x23333}},   {5, false, {0x2CCCD}},  // 2.2 and 2.8
    {8, false, {0x10000}},   {13, true, {0x26666, 0xF2A7, 0x0D59, 0x13D0, 0x0A5B}},
};

/// Signals whose light goes beyond white, also of ITU-T H.273, table 3.
struct HighRangeRow {
  unsigned number;
  std::string_view rgb2020, rgb, gray;
  std::vector<std::uint16_t> (*curve)();
};
constexpr HighRangeRow highRangeRows[] = {
    {16, "Rec. ITU-R BT.2100 PQ", "Calibrated RGB PQ", "Calibrated Gray PQ", perceptualQuantizerCurve},
    {18, "Rec. ITU-R BT.2100 HLG", "Calibrated RGB HLG", "Calibrated Gray HLG", hybridLogGammaCurve},
};

template <class Row, std::size_t count>
const Row* find(const Row (&rows)[count], unsigned number) {
  const auto* found =
      std::find_if(std::begin(rows), std::end(rows), [&](const Row& row) { return row.number == number; });
  return found == std::end(rows) ? nullptr : found;
}

bool isCameraCurve(unsigned transfer) {
  return transfer == 1 || transfer == 6 || transfer == 14 || transfer == 15;
}

/// Empty where no name says the same.
std::string_view nameOf(unsigned primaries, unsigned transfer) {
  if (primaries == 1 && transfer == 13) return kCGColorSpaceSRGB;
  if (primaries == 1 && transfer == 8) return kCGColorSpaceLinearSRGB;
  if (primaries == 12 && transfer == 13) return kCGColorSpaceDisplayP3;
  if (primaries == 9 && isCameraCurve(transfer)) return kCGColorSpaceITUR_2020;
  return {};
}

CGColorSpaceRef spaceOfHighRange(const HighRangeRow& row, unsigned primaries, ProfileNumbers numbers) {
  constexpr unsigned bt2020 = 9;
  numbers.description = !numbers.colorants ? row.gray : primaries == bt2020 ? row.rgb2020 : row.rgb;
  const std::vector<std::uint16_t> curve = row.curve();
  numbers.table = curve;
  if (numbers.colorants)
    numbers.codePoints = {static_cast<std::uint8_t>(primaries), static_cast<std::uint8_t>(row.number)};
  return CGColorSpace::createWithICCData(writeProfile(numbers));
}

}  // namespace

CGColorSpaceRef spaceOfCodePoints(unsigned primaries, unsigned transfer, CGColorSpaceModel model) {
  const PrimariesRow* const light = find(primariesRows, primaries);
  const bool gray = model == CGColorSpaceModel::monochrome;
  if (light == nullptr && !gray) return nullptr;
  constexpr unsigned sRGBCurve = 13;
  if (gray && transfer == sRGBCurve) return namedSpace(kCGColorSpaceGenericGrayGamma2_2);
  if (const auto name = nameOf(primaries, transfer); !gray && !name.empty()) return namedSpace(name);
  ProfileNumbers numbers;
  numbers.white = gray ? d65 : light->white;
  if (!gray) numbers.colorants = colorantsOf(light->white, light->primaries);
  if (const HighRangeRow* const row = find(highRangeRows, transfer))
    return spaceOfHighRange(*row, primaries, numbers);
  const TransferRow* const curve = find(transferRows, transfer);
  if (curve == nullptr) return nullptr;
  numbers.description = gray ? "Calibrated Gray" : "Calibrated RGB";
  numbers.curve = curve->curve;
  numbers.curveHasToe = curve->toe;
  return CGColorSpace::createWithICCData(writeProfile(numbers));
}

}  // namespace ostra
