#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "platform/foundation/bytes.h"
#include "platform/graphics/shaper.h"

namespace ostra {

/// A colour space as the numbers of a profile, all as s15.16 words.
struct ProfileNumbers {
  std::string_view description;
  /// Parameters of the one curve of all components: the exponent alone, or g a b c d (ICC.1 parametric forms
  /// 0 and 3).
  std::array<std::int32_t, 5> curve{};
  bool curveHasToe = false;
  /// Red, green, blue as X Y Z, adapted to D50. Nothing for gray.
  std::optional<std::array<std::int32_t, 9>> colorants;
  /// Chromaticity of the space's own white.
  std::array<double, 2> white{};
  /// Light from 0 to 65535 at equal steps of the value, the caller's: the curve in place of `curve`, unless
  /// empty.
  std::span<const std::uint16_t> table = {};
  /// Primaries and transfer function by their numbers in ITU-T H.273, for those who know more of them than
  /// the curve tells. For RGB.
  std::optional<std::array<std::uint8_t, 2>> codePoints = std::nullopt;
};

/// A display profile of version 4.3, or 4.4 where it tells code points. The same numbers give the same bytes
/// always: it carries a fixed date and no identifier, so that a picture converted twice is one file.
Bytes writeProfile(const ProfileNumbers& numbers);

/// Bradford adaptation of light under this white to D50. Nothing for a white that has no brightness.
std::optional<Matrix3> adaptationToD50(const std::array<double, 2>& white);

std::int32_t fixedWord(double value);

}  // namespace ostra
