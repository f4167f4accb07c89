#include "platform/graphics/named_spaces.h"

#include <algorithm>
#include <array>

#include "platform/graphics/color_space_contents.h"

namespace ostra {
namespace {

constexpr std::array<double, 2> d65 = {0.3127, 0.3290};
constexpr std::array<double, 2> d50 = {0.3457, 0.3585};
constexpr std::array<double, 2> theatre = {0.3140, 0.3510};

// Curves in the words that the published profiles of these spaces store (s15.16), so that a picture means
// here what it means elsewhere. The ROMM toe ends at an encoded 1/512, which leaves a pure power for all but
// the darkest codes.
constexpr std::array<std::int32_t, 5> sRGBCurve = {0x26666, 0xF2A7, 0x0D59, 0x13D0, 0x0A5B};
constexpr std::array<std::int32_t, 5> bt2020Curve = {0x238E4, 0xE8E0, 0x1720, 0x38E4, 0x14BC};
constexpr std::array<std::int32_t, 5> rommCurve = {0x1CCCD, 0x10000, 0, 0x1000, 0x80};
constexpr std::array<std::int32_t, 5> adobeCurve = {563 * 256};  // 563/256
constexpr std::array<std::int32_t, 5> theatreCurve = {0x2999A};
constexpr std::array<std::int32_t, 5> linearCurve = {0x10000};

constexpr std::array<std::int32_t, 9> sRGBColorants = {28578, 14581, 912,  25241, 46981,
                                                       6362,  9376,  3972, 46799};
constexpr std::array<std::int32_t, 9> p3Colorants = {33759, 15807, -69,  19135, 45367,
                                                     2745,  10296, 4363, 51385};
constexpr std::array<std::int32_t, 9> adobeColorants = {39960, 20389, 1276, 13453, 41004,
                                                        3989,  9777,  4143, 48796};
constexpr std::array<std::int32_t, 9> rommColorants = {52276, 18877, 0, 8860, 46654, 0, 2055, 6, 54080};
constexpr std::array<std::int32_t, 9> bt2020Colorants = {44137, 18287, -127, 10857, 44259,
                                                         1965,  8195,  2989, 52222};
constexpr std::array<std::int32_t, 9> theatreColorants = {31861, 14856, -53,  21224, 46552,
                                                          2833,  10105, 4128, 51280};

// The gray space is called after a gamma of 2.2 and has the sRGB curve: a neutral sRGB pixel v is gray v.
constexpr NamedSpaceRow rows[] = {
    {kCGColorSpaceSRGB, {"sRGB IEC61966-2.1", sRGBCurve, true, sRGBColorants, d65}},
    {kCGColorSpaceDisplayP3, {"Display P3", sRGBCurve, true, p3Colorants, d65}},
    {kCGColorSpaceAdobeRGB1998, {"Adobe RGB (1998)", adobeCurve, false, adobeColorants, d65}},
    {kCGColorSpaceROMMRGB, {"ROMM RGB: ISO 22028-2:2013", rommCurve, true, rommColorants, d50}},
    {kCGColorSpaceITUR_2020, {"Rec. ITU-R BT.2020-1", bt2020Curve, true, bt2020Colorants, d65}},
    {kCGColorSpaceDCIP3, {"SMPTE RP 431-2-2007 DCI (P3)", theatreCurve, false, theatreColorants, theatre}},
    {kCGColorSpaceLinearSRGB, {"sRGB IEC61966-2.1 Linear", linearCurve, false, sRGBColorants, d65}},
    {kCGColorSpaceGenericGrayGamma2_2,
     {"Generic Gray Gamma 2.2 Profile", sRGBCurve, true, std::nullopt, d65}},
};

CGColorSpaceRef makeSpace(const NamedSpaceRow& row) {
  auto contents = std::make_unique<CGColorSpace::Contents>();
  contents->name = row.name;
  contents->icc = writeProfile(row.numbers);
  contents->description = row.numbers.description;
  const auto profile = CheckedProfile::of(contents->icc);
  contents->model = profile->model();
  contents->components = profile->components();
  contents->shaper = Shaper::ofProfile(*profile);
  return std::make_shared<CGColorSpace>(std::move(contents));
}

CGColorSpaceRef makeDeviceCMYK() {
  auto contents = std::make_unique<CGColorSpace::Contents>();
  contents->model = CGColorSpaceModel::cmyk;
  contents->components = 4;
  contents->name = kCGColorSpaceDeviceCMYK;
  contents->description = "Generic CMYK";
  return std::make_shared<CGColorSpace>(std::move(contents));
}

using Spaces = std::array<CGColorSpaceRef, std::size(rows) + 1>;

const Spaces& spaces() {
  static const Spaces all = [] {
    Spaces made;
    std::transform(std::begin(rows), std::end(rows), made.begin(), makeSpace);
    made.back() = makeDeviceCMYK();
    return made;
  }();
  return all;
}

template <class Wanted>
CGColorSpaceRef firstSpace(const Wanted& wanted) {
  const auto found = std::find_if(spaces().begin(), spaces().end(), wanted);
  return found == spaces().end() ? nullptr : *found;
}

}  // namespace

std::span<const NamedSpaceRow> namedSpaceRows() { return rows; }

CGColorSpaceRef namedSpace(std::string_view name) {
  return firstSpace([&](const CGColorSpaceRef& space) { return space->name() == name; });
}

CGColorSpaceRef namedSpaceOfProfile(ByteView profile) {
  return firstSpace([&](const CGColorSpaceRef& space) {
    return !profile.empty() && std::ranges::equal(space->iccData(), profile);
  });
}

void prepareNamedColorSpaces() { spaces(); }

}  // namespace ostra
