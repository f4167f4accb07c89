#pragma once
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "platform/imageio/codecs/png_chunks.h"
#include "platform/imageio/metadata/carrier.h"

namespace ostra {

struct PngBlocks {
  Carrier carrier;
  /// The texts under registered keywords, which belong to the {PNG} group.
  std::vector<std::pair<std::string, std::string>> groupTexts;
};

/// The metadata blocks of a file: eXIf, the XMP packet, all texts, and Exif, IPTC and XMP in raw profiles
/// where the file has no native ones. More than `limit` bytes in all are not collected.
PngBlocks readPngBlocks(ByteView file, std::size_t limit);

}  // namespace ostra
