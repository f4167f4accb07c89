#pragma once
#include <memory>

#include "platform/imageio/codec.h"

namespace ostra {

/// TIFF 6.0 and BigTIFF. Pages are the directories of the chain but for smaller copies and masks; the first
/// page is frame 0. Profile, XMP, IPTC and Photoshop resources are tags of it, Exif and GPS directories below
/// it.
Answer<std::unique_ptr<CodecReader>> openTiff(FileBytes file, const Limits& limits);

/// One page in strips, compressed as the key Compression of {TIFF} says where that loses nothing, else with
/// deflate; in the byte order of the Exif block, which keeps every offset. A BigTIFF where 4 GiB do not hold
/// it.
Answer<Bytes> encodeTiff(const Pixels& pixels, const Properties* properties);

}  // namespace ostra
