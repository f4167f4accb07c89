#pragma once
#include <cstddef>

#include "platform/imageio/codecs/png_chunks.h"
#include "platform/imageio/metadata/carrier.h"

namespace ostra {

/// The metadata blocks of a file: eXIf, the XMP packet, all texts, Exif, IPTC and XMP in raw profiles where
/// the file has no native ones, and chunks that may be copied. More than `limit` bytes in all are not
/// collected.
Carrier readPngBlocks(ByteView file, std::size_t limit);

}  // namespace ostra
