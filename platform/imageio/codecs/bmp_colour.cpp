#include "platform/imageio/codecs/bmp_colour.h"

#include <cmath>
#include <string>

#include "platform/imageio/codecs/little_endian.h"
#include "platform/imageio/profile_space.h"

namespace ostra {
namespace {

constexpr std::size_t kSpaceField = 56, kEndpointsField = 60, kGammaField = 96, kIntentField = 108,
                      kProfileField = 112, kVersion4Size = 108, kVersion5Size = 124;
constexpr std::uint32_t kCalibrated = 0, kSRGB = 0x73524742, kEmbedded = 0x4D424544;
constexpr std::array<double, 2> kWhiteD65 = {0.3127, 0.3290};

ProfileRecord embeddedProfile(ByteView bitmap, const Limits& limits) {
  const std::size_t at = littleEndian32(bitmap, kProfileField),
                    size = littleEndian32(bitmap, kProfileField + 4);
  if (size > limits.profileBytes) throw LimitExceeded{LimitName::profileBytes};
  if (at > bitmap.size() || size > bitmap.size() - at || size == 0) return Untagged{};
  const ByteView bytes = bitmap.subspan(at, size);
  return IccProfile{Bytes(bytes.begin(), bytes.end())};
}

// One exponent for three colours: three different ones are nothing that a space here could say.
double gammaOf(ByteView bitmap) {
  const std::uint32_t gamma = littleEndian32(bitmap, kGammaField);
  const bool same =
      gamma == littleEndian32(bitmap, kGammaField + 4) && gamma == littleEndian32(bitmap, kGammaField + 8);
  return same ? gamma / 65536.0 : 0;
}

// Primaries as CIE XYZ. Many programs write chromaticities there, each with a sum of 1; then the white cannot
// be their sum.
ProfileRecord calibratedSpace(ByteView bitmap) {
  constexpr double kOne = 1 << 30;
  Calibrated space;
  space.primaries.emplace();
  space.gamma = gammaOf(bitmap);
  std::array<double, 3> white{};
  bool onlyChromaticities = true;
  for (std::size_t colour = 0; colour < 3; ++colour) {
    std::array<double, 3> xyz{};
    for (std::size_t i = 0; i < 3; ++i) {
      xyz[i] =
          static_cast<std::int32_t>(littleEndian32(bitmap, kEndpointsField + colour * 12 + i * 4)) / kOne;
      white[i] += xyz[i];
    }
    const double sum = xyz[0] + xyz[1] + xyz[2];
    if (sum <= 0 || space.gamma <= 0) return Untagged{};
    onlyChromaticities = onlyChromaticities && std::abs(sum - 1) < 0.01;
    (*space.primaries)[colour * 2] = xyz[0] / sum;
    (*space.primaries)[colour * 2 + 1] = xyz[1] / sum;
  }
  const double sum = white[0] + white[1] + white[2];
  space.white = onlyChromaticities ? kWhiteD65 : std::array{white[0] / sum, white[1] / sum};
  return space;
}

ProfileRecord statedColour(ByteView bitmap, const BmpHeader& header, const Limits& limits) {
  if (header.size < kVersion4Size) return Untagged{};
  const std::uint32_t space = littleEndian32(bitmap, kSpaceField);
  if (space == kSRGB) return NamedSpace{std::string(kCGColorSpaceSRGB)};
  if (space == kEmbedded && header.size >= kVersion5Size) return embeddedProfile(bitmap, limits);
  if (space == kCalibrated) return calibratedSpace(bitmap);
  return Untagged{};
}

}  // namespace

ProfileRecord readBmpColour(ByteView bitmap, const BmpHeader& header, CGColorSpaceModel model,
                            const Limits& limits) {
  ProfileRecord record = statedColour(bitmap, header, limits);
  return statedSpace(record, model) != nullptr ? record : Untagged{};
}

Bytes writtenBmpColour(std::uint32_t profileAt, std::uint32_t profileSize) {
  constexpr std::uint32_t kImagesIntent = 4;  // perceptual, as pictures are drawn
  Bytes fields;
  appendLittleEndian32(fields, profileSize == 0 ? kSRGB : kEmbedded);
  fields.resize(kIntentField - kSpaceField);
  for (const std::uint32_t field : {kImagesIntent, profileSize == 0 ? 0 : profileAt, profileSize, 0U})
    appendLittleEndian32(fields, field);
  return fields;
}

}  // namespace ostra
