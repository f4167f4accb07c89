#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/graphics/bitmap_info.h"
#include "platform/graphics/image.h"

namespace ostra {

enum class AlphaKind { none, straight, premultiplied };

/// Where the components of a pixel lie. Components are bytes or little-endian 16-bit words.
struct PixelFormat {
  std::size_t bytesPerComponent = 1;
  std::size_t componentsPerPixel = 4;  // as stored: with alpha or a skipped one
  std::size_t colors = 3;              // 1, 3 or 4; 0 where there is alpha alone
  std::size_t firstColor = 0;
  AlphaKind alpha = AlphaKind::none;
  std::size_t alphaIndex = 3;

  std::size_t bytesPerPixel() const { return bytesPerComponent * componentsPerPixel; }
};

/// What a picture may be made of: 8 or 16 bits; gray, alone or followed by alpha; RGB, alone or with a fourth
/// component at either end; CMYK alone; alpha alone at 8 bits. Nothing for any other combination.
/// `colors` are the components of the colour space, or nothing where there is none.
std::optional<PixelFormat> imagePixelFormat(const CGImage::Format& format, std::optional<int> colors);

/// The format of a picture whose provider holds all its rows and whose space has its number of colours.
/// Nothing for any other, so that what follows may read every pixel without asking.
std::optional<PixelFormat> wholePixelFormat(const CGImage::Format& format, const CGColorSpace* space,
                                            ByteView provider);

/// The few formats of drawing surfaces; see CGBitmapContext.
std::optional<PixelFormat> surfacePixelFormat(CGColorSpaceModel model, std::size_t bitsPerComponent,
                                              CGBitmapInfo bitmapInfo);

}  // namespace ostra
