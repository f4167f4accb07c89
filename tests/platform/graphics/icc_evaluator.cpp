#include "tests/platform/graphics/icc_evaluator.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace ostra::test {
namespace {

constexpr std::array<double, 3> kD50 = {0.9642, 1.0, 0.8249};

std::uint32_t word(ByteView bytes, std::size_t at) {
  return std::uint32_t{bytes[at]} << 24 | std::uint32_t{bytes[at + 1]} << 16 |
         std::uint32_t{bytes[at + 2]} << 8 | bytes[at + 3];
}
unsigned half(ByteView bytes, std::size_t at) { return bytes[at] * 256u + bytes[at + 1]; }
double fixedNumber(ByteView bytes, std::size_t at) {
  return static_cast<std::int32_t>(word(bytes, at)) / 65536.0;
}
bool says(ByteView bytes, std::size_t at, const char* text) { return std::memcmp(&bytes[at], text, 4) == 0; }

ByteView tagOf(ByteView profile, const char* name) {
  for (std::size_t i = 0; i < word(profile, 128); ++i) {
    const std::size_t entry = 132 + 12 * i;
    if (says(profile, entry, name))
      return profile.subspan(word(profile, entry + 4), word(profile, entry + 8));
  }
  return {};
}

/// CIE lightness from 0 to 1 and back.
double luminanceOf(double lightness) {
  const double t = (100 * lightness + 16) / 116;
  return t > 24.0 / 116 ? t * t * t : (t - 16.0 / 116) * 108 / 841;
}
double lightnessOf(double luminance) {
  const double limit = std::pow(24.0 / 116, 3);
  const double t = luminance > limit ? std::cbrt(luminance) : luminance * 841 / 108 + 16.0 / 116;
  return (116 * t - 16) / 100;
}

using Rows = std::array<std::array<double, 3>, 3>;

/// Gauss and Jordan.
Rows inverseOf(Rows m) {
  Rows result{};
  for (std::size_t i = 0; i < 3; ++i) result[i][i] = 1;
  for (std::size_t column = 0; column < 3; ++column) {
    std::size_t pivot = column;
    for (std::size_t row = column; row < 3; ++row)
      if (std::abs(m[row][column]) > std::abs(m[pivot][column])) pivot = row;
    std::swap(m[pivot], m[column]), std::swap(result[pivot], result[column]);
    const double strength = m[column][column];
    for (std::size_t k = 0; k < 3; ++k) m[column][k] /= strength, result[column][k] /= strength;
    for (std::size_t row = 0; row < 3; ++row) {
      const double share = m[row][column];
      for (std::size_t k = 0; row != column && k < 3; ++k)
        m[row][k] -= share * m[column][k], result[row][k] -= share * result[column][k];
    }
  }
  return result;
}

}  // namespace

std::optional<IccEvaluator::Curve> IccEvaluator::readCurve(ByteView tag) {
  Curve curve;
  if (tag.size() >= 12 && says(tag, 0, "curv")) {
    const std::size_t count = word(tag, 8);
    if (count == 1) curve.g = half(tag, 12) / 256.0;
    for (std::size_t i = 0; count > 1 && i < count; ++i)
      curve.table.push_back(half(tag, 12 + 2 * i) / 65535.0);
    if (!std::is_sorted(curve.table.begin(), curve.table.end())) return std::nullopt;
    return curve;
  }
  if (tag.size() < 16 || !says(tag, 0, "para")) return std::nullopt;
  const unsigned form = half(tag, 8);
  const auto parameter = [&](std::size_t i) { return fixedNumber(tag, 12 + 4 * i); };
  curve.g = parameter(0);
  if (form == 0) return curve;
  curve.a = parameter(1), curve.b = parameter(2);
  if (form <= 2) {
    if (form == 2) curve.e = curve.f = parameter(3);
    curve.d = -curve.b / curve.a;
  } else {
    curve.c = parameter(3), curve.d = parameter(4);
    if (form == 4) curve.e = parameter(5), curve.f = parameter(6);
  }
  curve.toe = true;
  return curve;
}

double IccEvaluator::Curve::light(double value) const {
  if (!table.empty()) {
    const double place = value * static_cast<double>(table.size() - 1);
    const std::size_t below = std::min(static_cast<std::size_t>(place), table.size() - 2);
    return table[below] + (place - static_cast<double>(below)) * (table[below + 1] - table[below]);
  }
  if (toe && value < d) return c * value + f;
  return std::pow(std::max(0.0, a * value + b), g) + e;
}

double IccEvaluator::Curve::value(double light) const {
  if (!table.empty()) {
    if (light >= table.back()) return 1;
    // The last of several equal entries stands for their light.
    const auto above = std::upper_bound(table.begin(), table.end(), std::max(light, table.front()));
    const double below = *(above - 1), part = (std::max(light, table.front()) - below) / (*above - below);
    return (static_cast<double>(above - 1 - table.begin()) + part) / static_cast<double>(table.size() - 1);
  }
  if (toe && c > 0 && light < std::pow(std::max(0.0, a * d + b), g) + e) return (light - f) / c;
  return (std::pow(std::max(0.0, light - e), 1 / g) - b) / a;
}

bool IccEvaluator::readColour(ByteView profile) {
  const char* const curveTags[] = {"rTRC", "gTRC", "bTRC"};
  const char* const columnTags[] = {"rXYZ", "gXYZ", "bXYZ"};
  for (std::size_t i = 0; i < 3; ++i) {
    auto curve = readCurve(tagOf(profile, curveTags[i]));
    const ByteView column = tagOf(profile, columnTags[i]);
    if (!curve || column.size() < 20) return false;
    curves_[i] = std::move(*curve);
    for (std::size_t row = 0; row < 3; ++row) matrix_[row][i] = fixedNumber(column, 8 + 4 * row);
  }
  inverse_ = inverseOf(matrix_);
  return true;
}

std::optional<IccEvaluator> IccEvaluator::of(ByteView profile) {
  IccEvaluator evaluator;
  if (!tagOf(profile, "A2B0").empty() || !tagOf(profile, "B2A0").empty()) return std::nullopt;
  evaluator.gray_ = says(profile, 16, "GRAY");
  evaluator.lab_ = says(profile, 20, "Lab ");
  if (!evaluator.gray_) {
    if (evaluator.lab_ || !says(profile, 16, "RGB ") || !evaluator.readColour(profile)) return std::nullopt;
    return evaluator;
  }
  auto curve = readCurve(tagOf(profile, "kTRC"));
  if (!curve) return std::nullopt;
  evaluator.curves_[0] = std::move(*curve);
  return evaluator;
}

IccEvaluator::XYZ IccEvaluator::toXYZ(const double* values) const {
  if (gray_) {
    const double light = curves_[0].light(values[0]);
    const double y = lab_ ? luminanceOf(light) : light;
    return {kD50[0] * y, kD50[1] * y, kD50[2] * y};
  }
  XYZ xyz{};
  for (std::size_t i = 0; i < 3; ++i) {
    const double light = curves_[i].light(values[i]);
    for (std::size_t row = 0; row < 3; ++row) xyz[row] += matrix_[row][i] * light;
  }
  return xyz;
}

void IccEvaluator::fromXYZ(const XYZ& xyz, double* values) const {
  const auto stored = [](const Curve& curve, double light) {
    return std::clamp(curve.value(std::clamp(light, 0.0, 1.0)), 0.0, 1.0);
  };
  if (gray_) {
    values[0] = stored(curves_[0], lab_ ? lightnessOf(xyz[1]) : xyz[1]);
    return;
  }
  for (std::size_t i = 0; i < 3; ++i)
    values[i] =
        stored(curves_[i], inverse_[i][0] * xyz[0] + inverse_[i][1] * xyz[1] + inverse_[i][2] * xyz[2]);
}

}  // namespace ostra::test
