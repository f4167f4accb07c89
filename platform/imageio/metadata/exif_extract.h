#pragma once
#include "platform/foundation/bytes.h"

namespace ostra {

/// An Exif block of what a TIFF file, or a camera's raw file that is one, says about its picture: the
/// descriptive tags of its first directory, and the directories of Exif, GPS and interoperability, in the
/// byte order of the file, each value byte by byte. Empty when there is nothing of that, or the directories
/// are malformed. What a maker note refers to outside itself is not found in the block.
Bytes exifBlockOfTiff(ByteView file);

}  // namespace ostra
