#include "platform/graphics/tone_curve.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "platform/graphics/icc_check.h"

namespace ostra {
namespace {

/// A curve may miss 1 by the rounding of its stored numbers, not by more.
constexpr double roundingAtWhite = 1e-3;

std::optional<ToneCurve> tableOf(ByteView tag, std::size_t count) {
  ToneCurve curve;
  curve.table.reserve(count);
  for (std::size_t i = 0; i < count; ++i) curve.table.push_back(iccUInt16(tag, 12 + 2 * i) / 65535.0);
  if (!std::is_sorted(curve.table.begin(), curve.table.end()) || curve.table.back() <= curve.table.front())
    return std::nullopt;
  return curve;
}

std::optional<ToneCurve> ofCurve(ByteView tag) {
  if (tag.size() < 12) return std::nullopt;
  const std::size_t count = iccUInt32(tag, 8);
  if (count > (tag.size() - 12) / 2) return std::nullopt;
  if (count > 1) return tableOf(tag, count);
  ToneCurve curve;
  if (count == 1) curve.g = iccUInt16(tag, 12) / 256.0;
  return curve;
}

std::optional<ToneCurve> ofParameters(ByteView tag) {
  constexpr std::array<std::size_t, 5> parameterCounts = {1, 3, 4, 5, 7};
  if (tag.size() < 12) return std::nullopt;
  const std::size_t form = iccUInt16(tag, 8);
  if (form >= parameterCounts.size() || tag.size() < 12 + 4 * parameterCounts[form]) return std::nullopt;
  std::array<double, 7> p{};
  for (std::size_t i = 0; i < parameterCounts[form]; ++i) p[i] = iccFixed(tag, 12 + 4 * i);
  ToneCurve curve;
  curve.g = p[0];
  if (form == 0) return curve;
  curve.a = p[1], curve.b = p[2];
  const bool hasOffsets = form == 2 ? p[3] != 0 : p[5] != 0 || p[6] != 0;
  if (curve.a <= 0 || hasOffsets) return std::nullopt;
  if (form < 3) {
    curve.d = -curve.b / curve.a;
  } else {
    curve.c = p[3], curve.d = p[4];
  }
  return curve;
}

bool rises(const ToneCurve& curve) {
  if (!curve.table.empty()) return true;
  const bool sound =
      curve.g > 0 && curve.a > 0 && curve.c >= 0 && curve.a * std::max(curve.d, 0.0) + curve.b >= 0;
  return sound && curve.d < 1 && curve.decode(0) < curve.decode(1) && curve.decode(1) <= 1 + roundingAtWhite;
}

double decodeTable(const std::vector<double>& table, double value) {
  const double position = std::clamp(value, 0.0, 1.0) * static_cast<double>(table.size() - 1);
  const std::size_t left = std::min(static_cast<std::size_t>(position), table.size() - 2);
  return std::lerp(table[left], table[left + 1], position - static_cast<double>(left));
}

/// Where several entries hold one light, the last of them stands for it, as in the colour library.
double encodeTable(const std::vector<double>& table, double light) {
  if (light >= table.back()) return 1;
  light = std::max(light, table.front());
  const auto right = std::upper_bound(table.begin(), table.end(), light);
  const auto left = right - 1;
  return (static_cast<double>(left - table.begin()) + (light - *left) / (*right - *left)) /
         static_cast<double>(table.size() - 1);
}

}  // namespace

std::optional<ToneCurve> ToneCurve::ofTag(ByteView tag) {
  if (tag.size() < 8) return std::nullopt;
  std::optional<ToneCurve> curve;
  if (iccUInt32(tag, 0) == iccSignature("curv")) curve = ofCurve(tag);
  if (iccUInt32(tag, 0) == iccSignature("para")) curve = ofParameters(tag);
  return curve && rises(*curve) ? curve : std::nullopt;
}

double ToneCurve::decode(double value) const { return value < d ? c * value : decodeAboveToe(value); }

double ToneCurve::decodeAboveToe(double value) const {
  if (!table.empty()) return decodeTable(table, value);
  return std::pow(std::max(a * value + b, 0.0), g);
}

double ToneCurve::toeEnd() const {
  if (!table.empty() || d <= 0 || c <= 0) return 0;
  return decodeAboveToe(d);
}

double ToneCurve::encodeAboveToe(double light) const {
  if (!table.empty()) return encodeTable(table, light);
  return (std::pow(std::max(light, 0.0), 1 / g) - b) / a;
}

double ToneCurve::encode(double light) const {
  return std::clamp(light < toeEnd() ? light / c : encodeAboveToe(light), 0.0, 1.0);
}

}  // namespace ostra
