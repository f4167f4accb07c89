#pragma once
#include "platform/imageio/codec_door.h"
#include "platform/imageio/modules/tiff/tiff_directory.h"

namespace ostra {

/// The pixels of the first directory, as they are stored: not turned by its orientation, without a profile
/// where they mean what the file says, and in ROMM RGB where they were CIELAB.
Answer<Pixels> decodeTiffPixels(const TiffFile& file, const TiffDirectory& directory, const Limits& limits);

}  // namespace ostra
