#pragma once
#include "platform/imageio/codec_door.h"

namespace ostra {

/// What an Exif block says of the colours (Exif 2.32, ColorSpace; DCF 2.0, interoperability index): sRGB,
/// Adobe RGB, or untagged.
ProfileRecord exifColour(ByteView block);

}  // namespace ostra
