#pragma once
#include "platform/imageio/codec.h"
#include "platform/imageio/codecs/psd_structure.h"

namespace ostra {

/// The merged picture, with what its colours mean.
Answer<Pixels> decodePsdPixels(const PsdStructure& psd, std::size_t fileSize, const Limits& limits);

/// The profile of the file where it fits the pixels. Without one Lab is read as ROMM RGB, and linear light
/// (32 bits) as sRGB. Throws `LimitExceeded`.
ProfileRecord readPsdColour(const PsdStructure& psd, const Limits& limits);

}  // namespace ostra
