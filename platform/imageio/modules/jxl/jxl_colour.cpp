#include "platform/imageio/modules/jxl/jxl_colour.h"

#include "platform/graphics/code_points.h"
#include "platform/imageio/modules/jxl/wide_enough.h"
#include "platform/imageio/profile_space.h"

namespace ostra {
namespace {

constexpr JxlColorProfileTarget kOriginal = JXL_COLOR_PROFILE_TARGET_ORIGINAL;
constexpr JxlColorProfileTarget kDecoded = JXL_COLOR_PROFILE_TARGET_DATA;

std::optional<JxlColorEncoding> encodingOf(const JxlDecoder* decoder, JxlColorProfileTarget target) {
  JxlColorEncoding encoding{};  // of gray the library leaves the primaries as they are
  if (JxlDecoderGetColorAsEncodedProfile(decoder, nullptr, target, &encoding) != JXL_DEC_SUCCESS)
    return std::nullopt;
  return encoding;
}

// Empty when there is none.
Bytes profileOf(const JxlDecoder* decoder, JxlColorProfileTarget target, const Limits& limits) {
  std::size_t size = 0;
  if (JxlDecoderGetICCProfileSize(decoder, nullptr, target, &size) != JXL_DEC_SUCCESS) return {};
  if (size > limits.profileBytes) throw LimitExceeded{LimitName::profileBytes};
  Bytes profile(size);
  if (JxlDecoderGetColorAsICCProfile(decoder, nullptr, target, profile.data(), profile.size()) !=
      JXL_DEC_SUCCESS)
    return {};
  return profile;
}

// The number of ITU-T H.273; 2 says that there is none, here and there.
unsigned primariesOf(const JxlColorEncoding& encoding) {
  constexpr unsigned kNone = JXL_PRIMARIES_CUSTOM, kDisplayP3 = 12;
  const bool isP3 = encoding.primaries == JXL_PRIMARIES_P3;
  if (encoding.white_point == JXL_WHITE_POINT_DCI && isP3) return JXL_PRIMARIES_P3;
  if (encoding.white_point != JXL_WHITE_POINT_D65) return kNone;
  return isP3 ? kDisplayP3 : static_cast<unsigned>(encoding.primaries);
}

CGColorSpaceRef spaceOf(const JxlColorEncoding& encoding, CGColorSpaceModel model) {
  if (model == CGColorSpaceModel::cmyk || encoding.transfer_function == JXL_TRANSFER_FUNCTION_GAMMA)
    return nullptr;
  if (model == CGColorSpaceModel::monochrome && encoding.white_point != JXL_WHITE_POINT_D65) return nullptr;
  return spaceOfCodePoints(primariesOf(encoding), encoding.transfer_function, model);
}

// Of a picture that is stored without loss of its own numbers, or under a space that has a name, decoded
// pixels are in that space. Others, whose profile describes what was packed and not what comes out, would
// come out as light of sRGB, all other colours cut off.
void chooseSpace(JxlDecoder* decoder, const Limits& limits, JxlStructure& structure) {
  if (structure.keepsNumbers || encodingOf(decoder, kOriginal)) return;
  const JxlColorEncoding wanted = wideEnough(profileOf(decoder, kOriginal, limits), structure.model);
  if (JxlDecoderSetPreferredColorProfile(decoder, &wanted) == JXL_DEC_SUCCESS) structure.wanted = wanted;
}

}  // namespace

bool readJxlColour(JxlDecoder* decoder, const Limits& limits, JxlStructure& structure) {
  chooseSpace(decoder, limits, structure);
  if (const auto encoding = encodingOf(decoder, kDecoded)) {
    if (const CGColorSpaceRef space = spaceOf(*encoding, structure.model)) {
      structure.profile = profileOfSpace(space);
      return true;
    }
  }
  ProfileRecord profile = IccProfile{profileOf(decoder, kDecoded, limits)};
  if (statedSpace(profile, structure.model) != nullptr) structure.profile = std::move(profile);
  return true;
}

}  // namespace ostra
