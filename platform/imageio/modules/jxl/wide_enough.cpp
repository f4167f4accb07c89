#include "platform/imageio/modules/jxl/wide_enough.h"

#include <algorithm>
#include <array>
#include <optional>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/bmff_boxes.h"

namespace ostra {
namespace {

/// XYZ of red, green and blue.
using Colorants = std::array<std::array<double, 3>, 3>;

std::optional<ByteView> tagOf(ByteView profile, std::uint32_t name) {
  constexpr std::size_t kCount = 128, kEntry = 12;
  if (profile.size() < kCount + 4) return std::nullopt;
  const std::size_t count = std::min<std::size_t>(bigEndian32(profile, kCount), 100);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = kCount + 4 + i * kEntry;
    if (at + kEntry > profile.size()) return std::nullopt;
    const std::size_t offset = bigEndian32(profile, at + 4), size = bigEndian32(profile, at + 8);
    if (bigEndian32(profile, at) != name) continue;
    if (offset > profile.size() || size > profile.size() - offset) return std::nullopt;
    return profile.subspan(offset, size);
  }
  return std::nullopt;
}

std::optional<Colorants> colorantsOf(ByteView profile) {
  constexpr std::array kNames = {bmffType("rXYZ"), bmffType("gXYZ"), bmffType("bXYZ")};
  Colorants colorants;
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    const auto tag = tagOf(profile, kNames[i]);
    if (!tag || tag->size() < 20) return std::nullopt;
    for (std::size_t k = 0; k < 3; ++k)
      colorants[i][k] = static_cast<std::int32_t>(bigEndian32(*tag, 8 + 4 * k)) / 65536.0;
  }
  return colorants;
}

double determinant(const std::array<double, 3>& a, const std::array<double, 3>& b,
                   const std::array<double, 3>& c) {
  return a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0]) +
         a[2] * (b[0] * c[1] - b[1] * c[0]);
}

// Whether each colour is a mixture of the space's own with no negative part to speak of.
bool holds(const Colorants& space, const Colorants& colours) {
  constexpr double kRounding = -0.01;
  const double whole = determinant(space[0], space[1], space[2]);
  return whole != 0 && std::all_of(colours.begin(), colours.end(), [&](const auto& colour) {
           return determinant(colour, space[1], space[2]) / whole >= kRounding &&
                  determinant(space[0], colour, space[2]) / whole >= kRounding &&
                  determinant(space[0], space[1], colour) / whole >= kRounding;
         });
}

struct Candidate {
  std::string_view name;
  JxlPrimaries primaries;
};
constexpr std::array kCandidates = {Candidate{kCGColorSpaceSRGB, JXL_PRIMARIES_SRGB},
                                    Candidate{kCGColorSpaceDisplayP3, JXL_PRIMARIES_P3},
                                    Candidate{kCGColorSpaceITUR_2020, JXL_PRIMARIES_2100},
                                    Candidate{kCGColorSpaceROMMRGB, JXL_PRIMARIES_CUSTOM}};

JxlPrimaries primariesFor(ByteView profile) {
  const auto colours = colorantsOf(profile);
  for (const Candidate& candidate : kCandidates) {
    const CGColorSpaceRef space = CGColorSpace::createWithName(candidate.name);
    const auto own = space != nullptr ? colorantsOf(space->iccData()) : std::nullopt;
    if (colours && own && holds(*own, *colours)) return candidate.primaries;
  }
  return JXL_PRIMARIES_CUSTOM;
}

// ISO 22028-2, which has no number of its own.
void setRomm(JxlColorEncoding& encoding) {
  constexpr std::array<std::array<double, 2>, 4> kPoints = {
      {{0.3457, 0.3585}, {0.7347, 0.2653}, {0.1596, 0.8404}, {0.0366, 0.0001}}};
  double* const places[] = {encoding.white_point_xy, encoding.primaries_red_xy, encoding.primaries_green_xy,
                            encoding.primaries_blue_xy};
  for (std::size_t i = 0; i < kPoints.size(); ++i) std::copy(kPoints[i].begin(), kPoints[i].end(), places[i]);
  encoding.white_point = JXL_WHITE_POINT_CUSTOM;
}

}  // namespace

JxlColorEncoding wideEnough(ByteView profile, CGColorSpaceModel model) {
  JxlColorEncoding encoding{};
  encoding.color_space = model == CGColorSpaceModel::monochrome ? JXL_COLOR_SPACE_GRAY : JXL_COLOR_SPACE_RGB;
  encoding.white_point = JXL_WHITE_POINT_D65;
  encoding.primaries = model == CGColorSpaceModel::monochrome ? JXL_PRIMARIES_SRGB : primariesFor(profile);
  if (encoding.primaries == JXL_PRIMARIES_CUSTOM) setRomm(encoding);
  encoding.transfer_function = JXL_TRANSFER_FUNCTION_SRGB;
  encoding.rendering_intent = JXL_RENDERING_INTENT_RELATIVE;
  return encoding;
}

}  // namespace ostra
