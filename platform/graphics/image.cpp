#include "platform/graphics/image.h"

namespace ostra {

CGImage::CGImage(const Format& format, CGColorSpaceRef space, SharedBytes provider,
                 CGColorRenderingIntent intent)
    : format_(format), space_(std::move(space)), pixels_(std::move(provider)), intent_(intent) {}

CGImageAlphaInfo CGImage::alphaInfo() const {
  return static_cast<CGImageAlphaInfo>(format_.bitmapInfo & kCGBitmapAlphaInfoMask);
}

}  // namespace ostra
