#pragma once
#include <memory>

#include "platform/imageio/codec.h"

namespace ostra {

/// TIFF 6.0 and BigTIFF. Pages are the directories of the chain but for smaller copies of others; the first
/// directory is frame 0. Profile, XMP, IPTC and Photoshop resources are tags of it, Exif and GPS directories
/// below it.
Answer<std::unique_ptr<CodecReader>> openTiff(FileBytes file, const Limits& limits);

}  // namespace ostra
