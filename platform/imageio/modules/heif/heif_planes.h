#pragma once
#include "platform/imageio/codec_door.h"
#include "platform/imageio/modules/heif/heif_pictures.h"
#include "platform/imageio/straight_rows.h"

namespace ostra {

/// The picture as HEVC stores it: luma and chroma of half the size (BT.601, full range), or gray alone; alpha
/// beside them. 8 bits, or 10 for surfaces of 16. Null when there is not the memory.
HeifImage heifPlanes(const Layout& layout, StraightRows& rows);

}  // namespace ostra
