#include "platform/imageio/codecs/psd_decode.h"

#include <string>

#include "platform/imageio/codecs/decode_clock.h"
#include "platform/imageio/codecs/psd_channels.h"
#include "platform/imageio/codecs/psd_pixels.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/pixel_memory.h"
#include "platform/imageio/profile_space.h"

namespace ostra {
namespace {

constexpr std::uint16_t kProfile = 1039;

Layout decodedLayout(const PsdStructure& psd) {
  Layout layout;
  layout.width = psd.width;
  layout.height = psd.height;
  layout.bitsPerComponent = psd.bits > 8 || psd.mode == PsdMode::lab ? 16 : 8;
  layout.model = psd.model();
  const bool isGray = layout.model == CGColorSpaceModel::monochrome;
  const int components = isGray ? (psd.hasAlpha() ? 2 : 1) : 4;
  layout.bitsPerPixel = static_cast<std::uint8_t>(components * layout.bitsPerComponent);
  layout.bytesPerRow = std::size_t{layout.width} * (layout.bitsPerPixel / 8u);
  const CGImageAlphaInfo alpha = psd.hasAlpha()                           ? CGImageAlphaInfo::last
                                 : layout.model == CGColorSpaceModel::rgb ? CGImageAlphaInfo::noneSkipLast
                                                                          : CGImageAlphaInfo::none;
  layout.bitmapInfo =
      static_cast<CGBitmapInfo>(alpha) | (layout.bitsPerComponent == 16 ? kCGBitmapByteOrder16Little : 0);
  return layout;
}

ProfileRecord embeddedProfile(const PsdStructure& psd, const Limits& limits) {
  const ByteView bytes = findPhotoshopResource(psd.resources, kProfile);
  if (bytes.size() > limits.profileBytes) throw LimitExceeded{LimitName::profileBytes};
  if (bytes.empty() || psd.mode == PsdMode::lab) return Untagged{};
  ProfileRecord profile = IccProfile{Bytes(bytes.begin(), bytes.end())};
  return statedSpace(profile, psd.model()) != nullptr ? profile : Untagged{};
}

}  // namespace

ProfileRecord readPsdColour(const PsdStructure& psd, const Limits& limits) {
  ProfileRecord profile = embeddedProfile(psd, limits);
  if (!std::holds_alternative<Untagged>(profile)) return profile;
  if (psd.mode == PsdMode::lab) return NamedSpace{std::string(kCGColorSpaceROMMRGB)};
  if (psd.bits == 32) return NamedSpace{std::string(kCGColorSpaceSRGB)};
  return profile;
}

Answer<Pixels> decodePsdPixels(const PsdStructure& psd, std::size_t fileSize, const Limits& limits) {
  const Layout layout = decodedLayout(psd);
  const LimitName limit =
      exceededLimit(limits, layout.width, layout.height, layout.bitsPerPixel / 8u, fileSize);
  if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
  if (!psd.hasMergedPicture) return Fault{FaultKind::damaged};
  const auto channels = PsdChannels::find(psd);
  if (!channels) return Fault{FaultKind::damaged};
  ProfileRecord profile = readPsdColour(psd, limits);
  const PsdPixels pixels(psd, std::holds_alternative<IccProfile>(profile));
  PixelMemory memory(layout.bytesPerRow * layout.height);
  const bool readsAlpha = psd.hasAlpha() && psd.mode != PsdMode::indexed;
  PsdPixels::Planes planes(psd.colours() + (readsAlpha ? 1 : 0),
                           std::vector<std::uint8_t>(channels->bytesPerRow()));
  const DecodeClock clock(limits.seconds);
  for (std::uint32_t y = 0; y < psd.height; ++y) {
    for (unsigned c = 0; c < planes.size(); ++c) {
      if (!channels->read(c, y, planes[c].data())) return Fault{FaultKind::damaged};
    }
    pixels.write(planes, memory.data() + y * layout.bytesPerRow);
    if (clock.isOver()) return Fault{FaultKind::limit, LimitName::seconds};
  }
  return Pixels{layout, std::move(memory).share(), std::move(profile)};
}

}  // namespace ostra
