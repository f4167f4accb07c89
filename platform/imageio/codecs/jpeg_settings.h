#pragma once
#include <cstdint>

#include "platform/imageio/properties.h"

namespace ostra {

/// How a JPEG is to be written.
struct JpegSettings {
  double quality = 0.9;    // 0 to 1
  bool fullColour = true;  // colour stored for every pixel, from a quality of 0.9 on
  /// JFIF's: 0 an aspect ratio, 1 dots an inch.
  std::uint8_t densityUnit = 0;
  std::uint16_t xDensity = 1, yDensity = 1;
};

/// From what the properties say; `properties` may be null.
JpegSettings jpegSettings(const Properties* properties);

}  // namespace ostra
