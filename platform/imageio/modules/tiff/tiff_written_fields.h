#pragma once
#include <vector>

#include "platform/imageio/codec_door.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/modules/tiff/tiff_layout.h"
#include "platform/imageio/modules/tiff/tiff_strips.h"

namespace ostra {

/// What says how the picture is stored.
std::vector<TiffField> tiffStorageFields(const TiffLayout& layout, const Layout& pixels,
                                         const TiffPacking& packing, const TiffStrips& strips);

/// What the Exif block, with which the file begins, says: the entries of its first directory that speak of
/// the picture. Those below it stay where they are, but a BigTIFF needs them in its own words.
std::vector<TiffField> tiffExifFields(TiffLayout& layout, const ExifStructure& block);

/// The blocks that have tags of their own.
std::vector<TiffField> tiffBlockFields(const TiffLayout& layout, const MetadataBlocks& blocks,
                                       ByteView profile);

/// The density, for a file whose Exif block tells none.
std::vector<TiffField> tiffDensityFields(const TiffLayout& layout, const Density& density);

}  // namespace ostra
