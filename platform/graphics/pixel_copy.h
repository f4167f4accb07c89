#pragma once
#include <cstddef>
#include <cstdint>

#include "platform/graphics/pixel_format.h"

namespace ostra {

/// Draws a row over a surface of the same colour space, in integers: without alpha components are copied (8
/// to 16 bits v·257, 16 to 8 rounded v/257); with alpha the result is the exact S + D·(1 - a), rounded once.
/// Both formats have the same number of colours, or the picture has none and is black.
void drawSameSpace(const PixelFormat& picture, const std::uint8_t* from, const PixelFormat& surface,
                   std::uint8_t* to, std::size_t count);

}  // namespace ostra
