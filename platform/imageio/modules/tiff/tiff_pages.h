#pragma once
#include <cstdint>
#include <optional>

#include "platform/imageio/metadata/tiff_structure.h"

namespace ostra {

/// What the chain of directories holds.
struct TiffPages {
  std::uint32_t count = 0;
  std::uint64_t picture = 0;  // the directory of the first page
};

/// The pages: all directories of the chain but smaller copies of pages and their masks. Counting stops at
/// `most`, where the chain comes back to itself, and at a directory that is none. Nothing when the first one
/// is none; where all are copies or masks, the first one is the picture.
std::optional<TiffPages> readTiffPages(const TiffStructure& file, std::uint32_t most);

/// Whether the file is a camera's raw picture in the clothes of a TIFF. What can be read of such a one is its
/// thumbnail: written over the file, it would be all that is left.
bool isCameraRaw(const TiffStructure& file);

}  // namespace ostra
