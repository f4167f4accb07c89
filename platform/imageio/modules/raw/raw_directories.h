#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "platform/imageio/codec.h"
#include "platform/imageio/metadata/exif_structure.h"

namespace ostra {

/// A directory of a TIFF file, as far as it says what its pixels are and where they lie.
struct RawDirectory {
  unsigned photometry = 0, compression = 0;
  bool hasSlices = false;  // Canon's
  /// Its strips or tiles.
  std::vector<ByteRange> pieces;

  /// Whether its pixels are those of a sensor.
  bool isRaw() const;
  bool fits(FileBytes file) const;
};

struct RawDirectories {
  std::vector<RawDirectory> all;
  // Of the first one.
  std::string make, model;
  ByteView xmp;
  bool isDng = false;
};

/// All directories in the chain and below those in it, leniently: what cannot be read is left out. The mark
/// behind the byte order is not looked at.
RawDirectories readRawDirectories(FileBytes file);

}  // namespace ostra
