#include "platform/graphics/shaper.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace ostra {
namespace {

constexpr std::uint32_t tableTags[] = {
    iccSignature("A2B0"), iccSignature("A2B1"), iccSignature("A2B2"), iccSignature("B2A0"),
    iccSignature("B2A1"), iccSignature("B2A2"), iccSignature("D2B0"), iccSignature("D2B1"),
    iccSignature("D2B2"), iccSignature("D2B3"), iccSignature("B2D0"), iccSignature("B2D1"),
    iccSignature("B2D2"), iccSignature("B2D3"),
};

bool isCurvesAlone(const CheckedProfile& profile) {
  return std::none_of(std::begin(tableTags), std::end(tableTags),
                      [&](std::uint32_t tag) { return profile.has(tag); });
}

bool readColumn(Matrix3& matrix, std::size_t column, ByteView tag) {
  if (tag.size() < 20 || iccUInt32(tag, 0) != iccSignature("XYZ ")) return false;
  for (std::size_t row = 0; row < 3; ++row) matrix[row][column] = iccFixed(tag, 8 + 4 * row);
  return true;
}

/// Light of CIE lightness, both from 0 to 1.
ToneCurve lightnessCurve() {
  ToneCurve curve;
  curve.g = 3, curve.a = 100.0 / 116, curve.b = 16.0 / 116;
  curve.c = 100 * 27.0 / 24389, curve.d = 0.08;
  return curve;
}

/// Gray that connects through Lab holds lightness; where its own curve bends that, the colour library has it.
std::optional<ToneCurve> grayCurve(const CheckedProfile& profile) {
  auto curve = ToneCurve::ofTag(profile.tag(iccSignature("kTRC")));
  if (profile.connectionSpace() == iccSignature("XYZ ")) return curve;
  const bool straight = curve && *curve == ToneCurve{};
  return straight ? std::optional(lightnessCurve()) : std::nullopt;
}

std::optional<Shaper> grayShaper(const CheckedProfile& profile) {
  auto curve = grayCurve(profile);
  if (!curve) return std::nullopt;
  Shaper shaper;
  shaper.components = 1;
  shaper.curves[0] = std::move(*curve);
  for (std::size_t row = 0; row < 3; ++row) shaper.toXYZ[row][0] = whiteD50[row];
  return shaper;
}

std::optional<Shaper> rgbShaper(const CheckedProfile& profile) {
  if (profile.connectionSpace() != iccSignature("XYZ ")) return std::nullopt;
  constexpr std::uint32_t curveTags[] = {iccSignature("rTRC"), iccSignature("gTRC"), iccSignature("bTRC")};
  constexpr std::uint32_t columnTags[] = {iccSignature("rXYZ"), iccSignature("gXYZ"), iccSignature("bXYZ")};
  Shaper shaper;
  for (std::size_t i = 0; i < 3; ++i) {
    auto curve = ToneCurve::ofTag(profile.tag(curveTags[i]));
    if (!curve || !readColumn(shaper.toXYZ, i, profile.tag(columnTags[i]))) return std::nullopt;
    shaper.curves[i] = std::move(*curve);
  }
  return shaper;
}

double cofactor(const Matrix3& m, std::size_t row, std::size_t column) {
  const std::size_t r1 = (row + 1) % 3, r2 = (row + 2) % 3, c1 = (column + 1) % 3, c2 = (column + 2) % 3;
  return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
}

}  // namespace

Matrix3 product(const Matrix3& left, const Matrix3& right) {
  Matrix3 result{};
  for (std::size_t row = 0; row < 3; ++row)
    for (std::size_t column = 0; column < 3; ++column)
      for (std::size_t k = 0; k < 3; ++k) result[row][column] += left[row][k] * right[k][column];
  return result;
}

std::optional<Matrix3> inverse(const Matrix3& m) {
  const double determinant =
      m[0][0] * cofactor(m, 0, 0) + m[0][1] * cofactor(m, 0, 1) + m[0][2] * cofactor(m, 0, 2);
  if (!(std::abs(determinant) > 1e-6)) return std::nullopt;
  Matrix3 result{};
  for (std::size_t row = 0; row < 3; ++row)
    for (std::size_t column = 0; column < 3; ++column)
      result[row][column] = cofactor(m, column, row) / determinant;
  return result;
}

std::optional<Shaper> Shaper::ofProfile(const CheckedProfile& profile) {
  if (!isCurvesAlone(profile)) return std::nullopt;
  if (profile.model() == CGColorSpaceModel::monochrome) return grayShaper(profile);
  if (profile.model() == CGColorSpaceModel::rgb) return rgbShaper(profile);
  return std::nullopt;
}

std::optional<Matrix3> Shaper::fromXYZ() const {
  if (components == 3) return inverse(toXYZ);
  return Matrix3{{{0, 1, 0}, {}, {}}};
}

}  // namespace ostra
