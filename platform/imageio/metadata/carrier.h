#pragma once
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/foundation/bytes.h"
#include "platform/imageio/properties.h"

namespace ostra {

/// A text (UTF-8) under a keyword, with what PNG tells beside it: its language, and the keyword in that.
struct CarriedText {
  std::string keyword, text;
  std::string language, translatedKeyword;
  friend bool operator==(const CarriedText&, const CarriedText&) = default;
};

/// A chunk of a PNG that may be copied to a changed picture.
struct CarriedChunk {
  std::uint32_t type = 0;
  Bytes data;
  bool afterPixels = false;
};

/// Dots to the same length, across and down.
struct PixelAspect {
  std::uint32_t x = 1, y = 1;
};

/// The metadata blocks of one picture as they lay in its file, without the wrapping of the format, and the
/// tree that was read from them. Immutable once shared.
class Carrier {
 public:
  /// An Exif block: a TIFF structure, starting with its byte order mark.
  Bytes exif;
  /// An XMP packet (UTF-8 XML).
  Bytes xmp;
  /// IPTC-IIM records.
  Bytes iptc;
  /// The other Photoshop resources of the block that held the IPTC records, each whole with its "8BIM" head.
  Bytes photoshopResources;
  /// Comments of the file that belong to no group, byte by byte: nothing says in which characters.
  std::vector<std::string> comments;
  /// What a format stores under keywords. Some of it is at home in a key of the tree: see text_homes.h.
  std::vector<CarriedText> texts;
  /// What only a file of the same format takes back, in file order.
  std::vector<CarriedChunk> pngChunks;
  /// Width to height of a pixel, where the file tells that but no density.
  std::optional<PixelAspect> pixelAspect;
  /// The tree as it was read; what the tree handed to a writer is compared with.
  Dictionary tree;
  /// The part of the tree that the XMP packet alone tells, which needs no other place.
  Dictionary toldByXmp;

  bool empty() const;
};

/// The blocks to write for `properties`, in their final form.
struct MetadataBlocks {
  Bytes exif;
  Bytes xmp;
  Bytes iptc;
  Bytes photoshopResources;
  std::vector<std::string> comments;
  std::vector<CarriedText> texts;
};

/// What the picture being written is, where metadata repeats it.
struct WrittenPicture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

/// Reads the groups that `carrier`'s blocks hold into `tree` and remembers the tree in the carrier. `tree`
/// may hold top-level keys of the format already (pixel size, depth, density, orientation), which win.
/// Lenient: an entry that cannot be read is left out and its bytes stay. What the XMP packet says of the old
/// pixels leaves it here; what else it says fills keys that no other block tells.
Properties readMetadata(Carrier carrier, Dictionary tree);

/// The blocks of the carrier, patched by the difference between the tree as read and the tree as it is now,
/// less what described the old pixels (thumbnails, offsets). No offset of an Exif block moves. A block that
/// the carrier lacks is built from the tree's known tags. Nothing when the Exif block is malformed: the
/// caller then writes no file.
std::optional<MetadataBlocks> writeMetadata(const Properties& properties, const WrittenPicture& picture);

/// The carrier without the part of a group: "{Exif}", "{GPS}", "{TIFF}", "{IPTC}", "{ExifAux}" or "{8BIM}".
Carrier carrierWithoutGroup(const Carrier& carrier, std::string_view group);

/// Dots an inch, both above 0.
struct Density {
  double x = 0, y = 0;
};
/// What the tree states: the top level first, then {TIFF}, then {JFIF}; nothing when it states none.
std::optional<Density> statedDensity(const Dictionary& tree);
/// The properties with the stated density among the tags of TIFF, for formats that have no other place for
/// it.
Properties withDensityInTiff(Properties properties);

}  // namespace ostra
