#include "platform/imageio/modules/raw/raw_pixels.h"

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "platform/imageio/codecs/romm_curve.h"
#include "platform/imageio/codecs/srgb_curve.h"
#include "platform/imageio/pixel_memory.h"

namespace ostra {
namespace {

std::vector<std::uint16_t> storedValues(bool isGray) {
  std::vector<std::uint16_t> values(65536);
  for (std::size_t light = 0; light < values.size(); ++light) {
    const double fraction = static_cast<double>(light) / 65535;
    const double value = isGray ? srgbValueOfLight(fraction) : rommValueOfLight(fraction);
    values[light] = static_cast<std::uint16_t>(std::lround(value * 65535));
  }
  return values;
}

}  // namespace

ProfileRecord rawProfile(bool isGray) {
  return NamedSpace{std::string(isGray ? kCGColorSpaceGenericGrayGamma2_2 : kCGColorSpaceROMMRGB)};
}

Answer<Pixels> takeRawPixels(const RawLibrary& library, bool isGray) {
  const libraw_data_t& data = library->imgdata;
  if (data.image == nullptr || data.idata.colors != (isGray ? 1 : 3)) return Fault{FaultKind::damaged};
  Layout layout;
  layout.width = data.sizes.width;
  layout.height = data.sizes.height;
  layout.bitsPerComponent = 16;
  layout.bitsPerPixel = isGray ? 16 : 64;
  layout.bytesPerRow = std::size_t{layout.width} * (layout.bitsPerPixel / 8u);
  layout.model = isGray ? CGColorSpaceModel::monochrome : CGColorSpaceModel::rgb;
  layout.bitmapInfo =
      static_cast<CGBitmapInfo>(isGray ? CGImageAlphaInfo::none : CGImageAlphaInfo::noneSkipLast) |
      kCGBitmapByteOrder16Little;
  const std::vector<std::uint16_t> values = storedValues(isGray);
  PixelMemory memory(layout.bytesPerRow * layout.height);
  const std::size_t count = std::size_t{layout.width} * layout.height;
  const std::size_t step = layout.bitsPerPixel / 8u;
  for (std::size_t i = 0; i < count; ++i) {
    const ushort(&light)[4] = data.image[i];
    const std::uint16_t words[] = {values[light[0]], values[light[1]], values[light[2]], 65535};
    std::memcpy(memory.data() + step * i, words, step);
  }
  return Pixels{layout, std::move(memory).share(), rawProfile(isGray)};
}

}  // namespace ostra
