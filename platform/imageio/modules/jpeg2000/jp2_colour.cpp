#include "platform/imageio/modules/jpeg2000/jp2_colour.h"

#include <algorithm>
#include <string>

#include "platform/graphics/code_points.h"
#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/bmff_boxes.h"
#include "platform/imageio/profile_space.h"

namespace ostra {
namespace {

Jp2Space named(std::string_view name, bool isYcc = false) {
  return {CGColorSpaceModel::rgb, isYcc, NamedSpace{std::string(name)}};
}

// What the number of channels lets one expect.
Jp2Space usual(std::size_t channels) {
  Jp2Space space;
  if (channels < 3) space.model = CGColorSpaceModel::monochrome;
  return space;
}

// The numbers of ISO/IEC 15444-2, annex M.
std::optional<Jp2Space> enumerated(ByteView content) {
  if (content.size() < 4) return std::nullopt;
  switch (bigEndian32(content, 0)) {
    case 12:
      return Jp2Space{CGColorSpaceModel::cmyk, false, Untagged{}};
    case 16:
      return named(kCGColorSpaceSRGB);
    case 17:
      return Jp2Space{CGColorSpaceModel::monochrome, false,
                      NamedSpace{std::string(kCGColorSpaceGenericGrayGamma2_2)}};
    case 18:
      return named(kCGColorSpaceSRGB, true);
    case 21:
      return named(kCGColorSpaceROMMRGB);
    default:
      return std::nullopt;
  }
}

// A profile that makes no space leaves the picture untagged; one for samples of another kind is none that
// could be ignored.
std::optional<Jp2Space> profiled(ByteView content, const Limits& limits) {
  constexpr std::size_t kSignature = 16;
  if (content.size() > limits.profileBytes) throw LimitExceeded{LimitName::profileBytes};
  if (content.size() < kSignature + 4) return std::nullopt;
  Jp2Space space;
  switch (bigEndian32(content, kSignature)) {
    case bmffType("GRAY"):
      space.model = CGColorSpaceModel::monochrome;
      break;
    case bmffType("RGB "):
      break;
    case bmffType("CMYK"):
      space.model = CGColorSpaceModel::cmyk;
      break;
    default:
      return std::nullopt;
  }
  ProfileRecord profile = IccProfile{Bytes(content.begin(), content.end())};
  if (statedSpace(profile, space.model) != nullptr) space.profile = std::move(profile);
  return space;
}

// Primaries, transfer function, matrix (0, or one that makes sYCC's differences), full range.
std::optional<Jp2Space> fromCodePoints(ByteView content) {
  if (content.size() < 7 || (content[6] & 0x80) == 0) return std::nullopt;
  const unsigned matrix = bigEndian16(content, 4);
  if (matrix != 0 && matrix != 5 && matrix != 6) return std::nullopt;
  return Jp2Space{CGColorSpaceModel::rgb, matrix != 0,
                  profileOfSpace(spaceOfCodePoints(bigEndian16(content, 0), bigEndian16(content, 2),
                                                   CGColorSpaceModel::rgb))};
}

std::optional<Jp2Space> spaceOf(const Jp2Colour& colour, const Limits& limits) {
  switch (colour.method) {
    case 1:
      return enumerated(colour.content);
    case 2:
    case 3:
      return profiled(colour.content, limits);
    case 5:
      return fromCodePoints(colour.content);
    default:
      return std::nullopt;
  }
}

std::optional<Jp2Space> toldSpace(const Jp2Boxes& boxes, const Limits& limits) {
  std::optional<Jp2Space> best;
  int precedence = 0;
  for (const Jp2Colour& colour : boxes.colours) {
    if (best && colour.precedence <= precedence) continue;
    if (auto space = spaceOf(colour, limits)) {
      best = std::move(space);
      precedence = colour.precedence;
    }
  }
  return best;
}

}  // namespace

std::optional<Jp2Space> jp2SpaceOf(const Jp2Boxes& boxes, std::size_t channels, bool differencesAreCoarse,
                                   const Limits& limits) {
  std::optional<Jp2Space> space =
      boxes.colours.empty() ? std::optional(usual(channels)) : toldSpace(boxes, limits);
  if (!space) return std::nullopt;
  // Writers tell sRGB of gray pictures too, and then mean its curve.
  if (space->model == CGColorSpaceModel::rgb && !space->isYcc && channels < 3) {
    space->model = CGColorSpaceModel::monochrome;
    if (statedSpace(space->profile, space->model) == nullptr) space->profile = Untagged{};
  }
  // Nobody stores red finer than green: such channels are luminance and differences, told or not.
  if (space->model == CGColorSpaceModel::rgb && differencesAreCoarse) space->isYcc = true;
  return space;
}

}  // namespace ostra
