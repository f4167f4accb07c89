#pragma once
#include <optional>

#include "platform/imageio/codec_door.h"

namespace ostra {

/// The extensions before the frame, as they lie in the file: the profile, unless it is sRGB or one of gray,
/// XMP and comments. Nothing when the profile or a metadata block is malformed.
std::optional<Bytes> gifBlocksToWrite(const Pixels& pixels, const Properties* properties);

/// The byte that tells the shape of a pixel; 0 where the properties tell none that it can say.
std::uint8_t gifAspect(const Properties* properties);

}  // namespace ostra
