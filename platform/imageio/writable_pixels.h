#pragma once
#include <optional>

#include "platform/graphics/image.h"
#include "platform/imageio/codec_door.h"

namespace ostra {

/// The pixels of an image for an encoder: gray, RGB or CMYK of 8 or 16 bits, alpha of any kind, in the
/// image's own memory. Nothing for any other layout.
std::optional<Pixels> writablePixels(const CGImage& image);

}  // namespace ostra
