#pragma once
#include "platform/imageio/codec_door.h"
#include "platform/imageio/modules/tiff/tiff_directory.h"

namespace ostra {

/// The pixels of the current directory as they are stored, not turned by its orientation, which mean what
/// `profile` says.
Answer<Pixels> decodeTiffPixels(const TiffFile& file, const TiffDirectory& directory, ProfileRecord profile,
                                const Limits& limits);

}  // namespace ostra
