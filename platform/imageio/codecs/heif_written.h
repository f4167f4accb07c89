#pragma once
#include <optional>

#include "platform/imageio/codec_door.h"

namespace ostra {

/// What goes into a file of HEIF's kind beside the pixels.
struct HeifWritten {
  Bytes profile;    // empty: the pixels state nothing
  Bytes exif, xmp;  // empty: none
  int orientation = 1;
  int quality = 90;  // 0 to 100
  /// By the numbers of ITU-T H.273, for readers that know no profiles.
  unsigned primaries = 2, transfer = 2;
};

/// Nothing when the metadata or the profile cannot be written.
std::optional<HeifWritten> heifToWrite(const Pixels& pixels, const Properties* properties);

/// Whether the file's boxes say of the picture what it is: the last look before it replaces its original.
bool heifTells(ByteView file, const Pixels& pixels, const HeifWritten& written, bool alpha);

}  // namespace ostra
