#include "tests/platform/graphics/reference_colors.h"

#include <algorithm>
#include <cmath>

#include "platform/graphics/color_space.h"

namespace ostra::test {
namespace {

/// Colourants of the published profiles, X Y Z of red, then green, then blue, times 65536; and their curves.
struct Space {
  std::string_view name;
  char curve;  // s sRGB, b BT.2020, r ROMM, a Adobe, d DCI, l linear
  std::array<int, 9> colorants;
};

const std::vector<Space> spaces = {
    {"kCGColorSpaceSRGB", 's', {28578, 14581, 912, 25241, 46981, 6362, 9376, 3972, 46799}},
    {"kCGColorSpaceDisplayP3", 's', {33759, 15807, -69, 19135, 45367, 2745, 10296, 4363, 51385}},
    {"kCGColorSpaceAdobeRGB1998", 'a', {39960, 20389, 1276, 13453, 41004, 3989, 9777, 4143, 48796}},
    {"kCGColorSpaceROMMRGB", 'r', {52276, 18877, 0, 8860, 46654, 0, 2055, 6, 54080}},
    {"kCGColorSpaceITUR_2020", 'b', {44137, 18287, -127, 10857, 44259, 1965, 8195, 2989, 52222}},
    {"kCGColorSpaceDCIP3", 'd', {31861, 14856, -53, 21224, 46552, 2833, 10105, 4128, 51280}},
    {"kCGColorSpaceLinearSRGB", 'l', {28578, 14581, 912, 25241, 46981, 6362, 9376, 3972, 46799}},
    {"kCGColorSpaceGenericGrayGamma2_2", 's', {}},
};

/// Exponent, slope, offset, slope of the toe, end of the toe: s15.16 words.
struct Words {
  int g, a, b, c, d;
};

Words wordsOf(char curve) {
  switch (curve) {
    case 's':
      return {0x26666, 0xF2A7, 0x0D59, 0x13D0, 0x0A5B};
    case 'b':
      return {0x238E4, 0xE8E0, 0x1720, 0x38E4, 0x14BC};
    case 'r':
      return {0x1CCCD, 0x10000, 0, 0x1000, 0x80};
    case 'a':
      return {0x23300, 0x10000, 0, 0, 0};
    case 'd':
      return {0x2999A, 0x10000, 0, 0, 0};
    default:
      return {0x10000, 0x10000, 0, 0, 0};
  }
}

double number(int word) { return word / 65536.0; }

double light(char curve, double value) {
  const Words w = wordsOf(curve);
  if (value < number(w.d)) return number(w.c) * value;
  return std::pow(number(w.a) * value + number(w.b), number(w.g));
}

double stored(char curve, double amount) {
  const Words w = wordsOf(curve);
  amount = std::clamp(amount, 0.0, 1.0);
  const double join = w.d > 0 ? std::pow(number(w.a) * number(w.d) + number(w.b), number(w.g)) : 0;
  const double value =
      amount < join ? amount / number(w.c) : (std::pow(amount, 1 / number(w.g)) - number(w.b)) / number(w.a);
  return std::clamp(value, 0.0, 1.0);
}

const Space& named(std::string_view name) {
  return *std::find_if(spaces.begin(), spaces.end(), [&](const Space& space) { return space.name == name; });
}

std::array<double, 3> toXYZ(const Space& space, const Values& values) {
  if (values.size() == 1) {
    const double y = light(space.curve, values[0]);
    return {0.9642 * y, y, 0.8249 * y};
  }
  std::array<double, 3> xyz{};
  for (std::size_t i = 0; i < 9; ++i)
    xyz[i % 3] += number(space.colorants[i]) * light(space.curve, values[i / 3]);
  return xyz;
}

/// Cramer's rule, column by column.
Values fromXYZ(const Space& space, const std::array<double, 3>& xyz) {
  if (isGray(space.name)) return {stored(space.curve, xyz[1])};
  using Columns = std::array<std::array<double, 3>, 3>;
  const auto determinant = [](const Columns& m) {
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
           m[1][0] * (m[0][1] * m[2][2] - m[0][2] * m[2][1]) +
           m[2][0] * (m[0][1] * m[1][2] - m[0][2] * m[1][1]);
  };
  Columns columns{};
  for (std::size_t i = 0; i < 9; ++i) columns[i / 3][i % 3] = number(space.colorants[i]);
  Values values;
  for (std::size_t i = 0; i < 3; ++i) {
    Columns replaced = columns;
    replaced[i] = xyz;
    values.push_back(stored(space.curve, determinant(replaced) / determinant(columns)));
  }
  return values;
}

}  // namespace

Values convertByNumbers(std::string_view from, std::string_view to, const Values& values) {
  return from == to ? values : fromXYZ(named(to), toXYZ(named(from), values));
}

const std::vector<std::string_view>& namedSpaces() {
  static const std::vector<std::string_view> names = [] {
    std::vector<std::string_view> all;
    for (const Space& space : spaces) all.push_back(space.name);
    return all;
  }();
  return names;
}

bool isGray(std::string_view name) { return name == kCGColorSpaceGenericGrayGamma2_2; }

}  // namespace ostra::test
