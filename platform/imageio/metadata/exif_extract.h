#pragma once
#include <cstddef>

#include "platform/imageio/metadata/tiff_structure.h"

namespace ostra {

/// An Exif block of what a TIFF file says about one of its pictures: the tags of the picture's directory but
/// for those of its storage, and the directories of Exif, GPS and interoperability below it, in the byte
/// order of the file, each value byte by byte. Empty when there is nothing of that.
///
/// A maker note keeps its offset, from which its inner offsets may be counted, where that lies in the first
/// 64 KiB: a JPEG holds no larger block. What it refers to outside itself is not found in the block.
///
/// Throws `LimitExceeded` when the values come to more than `most` bytes.
Bytes exifBlockOfTiff(const TiffStructure& file, std::uint64_t directory, std::size_t most);

}  // namespace ostra
