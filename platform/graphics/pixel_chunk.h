#pragma once
#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/graphics/pixel_format.h"

namespace ostra {

/// A few pixels on their way from a picture to a surface, as planes that stay in the nearest cache. Values
/// are 0 to 1 and straight: not multiplied by alpha.
struct PixelChunk {
  static constexpr std::size_t capacity = 256;
  std::size_t count = 0;
  alignas(32) std::array<std::array<float, capacity>, 4> color;
  alignas(32) std::array<float, capacity> alpha;
};

/// Alpha of a row, where it has one.
void readAlpha(const PixelFormat& format, const std::uint8_t* row, PixelChunk& chunk);
/// Colours of a row; premultiplied ones are divided by alpha, which must have been read. Where alpha is all
/// there is, black.
void readColors(const PixelFormat& format, const std::uint8_t* row, PixelChunk& chunk);

/// Draws the chunk over what the surface holds: S·a + D·(1 - a) on the encoded values. `withAlpha` false
/// replaces.
void drawChunk(const PixelChunk& chunk, bool withAlpha, const PixelFormat& surface, std::uint8_t* row);

}  // namespace ostra
