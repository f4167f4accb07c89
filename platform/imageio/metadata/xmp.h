#pragma once
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/foundation/bytes.h"
#include "platform/foundation/value.h"

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
/// With the picture's size where the packet tells Exif's.
Bytes withPixelSize(ByteView packet, std::int64_t width, std::int64_t height);

/// Reads the keys of {TIFF}, {Exif}, {ExifAux} and {IPTC} that the tree lacks, and says which they were.
Dictionary readXmp(ByteView packet, Dictionary& tree);
/// Without the properties that repeat what differs between the trees, and with those of the new values that
/// no other block has a place for. An empty packet is made anew.
Bytes withTreeChanges(ByteView packet, const Dictionary& before, const Dictionary& after);

}  // namespace ostra
