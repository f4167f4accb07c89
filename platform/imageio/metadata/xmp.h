#pragma once
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/foundation/bytes.h"

namespace ostra {

/// All of these leave every byte that they do not cut, the wrapper of the packet included, and a packet that
/// is not well-formed XML in UTF-8 as it is. What is cut are properties of rdf:Description, written as
/// attributes or as elements. A packet that runs empty is gone.

/// Without the properties that describe the pixels, colours, thumbnails and appended pictures of the old
/// file, its develop settings, and the mark of an extended packet.
Bytes withoutPixelProperties(ByteView packet);
/// Without the properties that repeat a group of the tree: "{Exif}", "{ExifAux}", "{GPS}", "{TIFF}" or
/// "{IPTC}".
Bytes withoutGroupProperties(ByteView packet, std::string_view group);
/// With `orientation` (1 to 8) where the packet tells one.
Bytes withOrientation(ByteView packet, std::int64_t orientation);

}  // namespace ostra
