#pragma once
#include <cstdint>

#include "tests/platform/imageio/picture_files.h"

namespace ostra::test {

/// A Photoshop document to be put together, by default one of random 8-bit RGB.
struct PsdParts {
  unsigned mode = 3, bits = 8, channels = 3;
  std::uint32_t width = kWidth, height = kHeight;
  bool isLarge = false, isPacked = false;
  Bytes colours;    // the colour mode's data
  Bytes resources;  // the Photoshop block
  Bytes layers;     // what lies in the layers' section
  unsigned seed = 1;
  /// Instead of random ones: the channels one after the other, big-endian.
  Bytes samples;
};

Bytes psdOf(const PsdParts& parts);
/// The channels one after the other, rows of whole bytes.
Bytes psdSamples(const PsdParts& parts);
/// A resource of a Photoshop block, without a name.
Bytes psdResource(unsigned number, const Bytes& data);
/// What a layers' section holds whose merged picture's first further channel is transparency.
Bytes psdTransparentLayers(bool isLarge);

}  // namespace ostra::test
