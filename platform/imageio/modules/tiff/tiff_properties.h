#pragma once
#include "platform/imageio/codec_door.h"
#include "platform/imageio/metadata/tiff_structure.h"
#include "platform/imageio/modules/tiff/tiff_directory.h"

namespace ostra {

/// A picture of a file, read twice: by its entries, and what the library makes of them.
struct TiffPicture {
  TiffStructure structure;
  std::uint64_t offset = 0;  // of the directory
  TiffEntries entries;
  TiffDirectory directory;
};

/// The embedded profile, or what Exif says, or what the samples are known to mean.
ProfileRecord readTiffProfile(const TiffPicture& picture, const Limits& limits);
Properties readTiffProperties(const TiffPicture& picture, const Limits& limits);

}  // namespace ostra
