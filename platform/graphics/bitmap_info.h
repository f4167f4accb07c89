#pragma once
#include <cstdint>

namespace ostra {

/// How the alpha of a pixel is stored.
enum class CGImageAlphaInfo : std::uint32_t {
  none = 0,
  premultipliedLast = 1,
  premultipliedFirst = 2,
  last = 3,
  first = 4,
  noneSkipLast = 5,
  noneSkipFirst = 6,
  only = 7,
};

/// A bitmap information word: an alpha value, or'ed with a byte order.
using CGBitmapInfo = std::uint32_t;

inline constexpr CGBitmapInfo kCGBitmapAlphaInfoMask = 0x1F;
inline constexpr CGBitmapInfo kCGBitmapByteOrder16Little = 0x1000;

}  // namespace ostra
