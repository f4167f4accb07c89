#pragma once
#include <optional>
#include <string>

#include <ImfHeader.h>

namespace ostra {

enum class ExrColour { rgb, luminance, luminanceAndChroma };

/// The channels that make the picture.
struct ExrChannels {
  ExrColour colour = ExrColour::rgb;
  bool hasAlpha = false;
  /// What stands before the channels' names: the layer and a dot, or nothing.
  std::string prefix;
  /// Of the colours: 16, or 32.
  unsigned bits = 16;
  bool areIntegers = false;
};

/// The bare channels R, G, B (one of them at least), else Y, with chroma where RY and BY are there too. Else
/// the same of the first layer that has them. Nothing where none has: depth or other data is no picture.
std::optional<ExrChannels> pictureChannels(const Imf::Header& header);

}  // namespace ostra
