#pragma once
#include <optional>

#include "platform/graphics/image.h"
#include "platform/imageio/codec_door.h"

namespace ostra {

/// The pixels of an image as encoders take them: gray, RGB or CMYK of 8 or 16 bits, without alpha, with a
/// skipped fourth component, or with straight alpha last. Shares the image's memory where that is so already;
/// premultiplied colour is divided by its alpha (rounded to the nearest, at most full), and what stands first
/// goes last. Nothing for any other layout. May throw `std::bad_alloc`.
std::optional<Pixels> writablePixels(const CGImage& image);

}  // namespace ostra
