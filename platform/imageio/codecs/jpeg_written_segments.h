#pragma once
#include <optional>
#include <vector>

#include "platform/imageio/codec_door.h"

namespace ostra {

/// A segment to write as it is: a marker's number and at most 65533 bytes.
struct JpegWrittenSegment {
  int marker = 0;
  Bytes data;
};

/// The segments after JFIF's, in the order in which readers expect them: Exif, Photoshop with the IPTC
/// records, XMP, the profile, comments. Blocks that one segment does not hold continue in further ones; Exif,
/// which may not, sheds. Nothing when the profile or the Exif block is malformed.
std::optional<std::vector<JpegWrittenSegment>> jpegSegmentsToWrite(const Pixels& pixels,
                                                                   const Properties* properties);

}  // namespace ostra
