#pragma once
#include <memory>

#include "platform/graphics/color_space.h"
#include "platform/graphics/image.h"
#include "platform/graphics/pixel_chunk.h"

namespace ostra {

/// The way of a picture's colours into a surface's space, ready to be run on rows. Immutable; any number of
/// threads may run one at once.
class ColorMatch {
 public:
  /// `picture` and `surface` are the formats that it will be run on. Equal requests give the same object as
  /// long as it is among the last few. Null when the spaces make no transform.
  static std::shared_ptr<const ColorMatch> between(const CGColorSpaceRef& source,
                                                   const CGColorSpaceRef& destination,
                                                   CGColorRenderingIntent intent, const PixelFormat& picture);
  virtual ~ColorMatch() = default;
  /// Draws a row of the picture over a row of the surface: conversion first, then alpha.
  virtual void drawRow(const PixelFormat& picture, const std::uint8_t* from, const PixelFormat& surface,
                       std::uint8_t* to, std::size_t count) const = 0;
};

/// What a picture without a colour space is taken for, by the number of its colours: the gray space, sRGB, or
/// CMYK without a profile.
CGColorSpaceRef defaultSpace(std::size_t colors);

}  // namespace ostra
