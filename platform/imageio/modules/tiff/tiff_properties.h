#pragma once
#include "platform/imageio/codec_door.h"
#include "platform/imageio/modules/tiff/tiff_directory.h"

namespace ostra {

/// The embedded profile, or what Exif says.
ProfileRecord readTiffProfile(const TiffFile& file, const TiffDirectory& directory, const Limits& limits);
Properties readTiffProperties(const TiffFile& file, const TiffDirectory& directory, const Limits& limits);

}  // namespace ostra
