#pragma once
#include "platform/imageio/codec.h"

namespace ostra {

/// Radiance pictures, read only: RGBE and XYZE, plain or run-length encoded in either way, in any order of
/// scanlines. Light from 0 to 1 becomes 16 bits; what is brighter becomes 1.
bool matchesHdr(FileBytes head);
Answer<std::unique_ptr<CodecReader>> openHdr(FileBytes file, const Limits& limits);

}  // namespace ostra
