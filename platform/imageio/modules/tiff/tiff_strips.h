#pragma once
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/imageio/codec_door.h"

namespace ostra {

/// How a picture is packed.
struct TiffPacking {
  std::uint16_t compression = 1, predictor = 1;
  std::uint32_t rowsPerStrip = 1;
  std::uint16_t photometry = 1;
  std::uint16_t colours = 1;
  bool hasAlpha = false;
  std::uint16_t samples() const { return static_cast<std::uint16_t>(colours + (hasAlpha ? 1 : 0)); }
};

/// The packing that loses nothing of the pixels: that of `asked` (259 of TIFF 6.0 and its successors), which
/// tells how the picture was packed before, where we write it, else deflate; and differences where samples of
/// the picture show that they make it smaller.
TiffPacking tiffPacking(const Pixels& pixels, std::uint16_t asked);

struct TiffStrips {
  std::vector<std::uint64_t> offsets, sizes;
};
/// Packs the rows onto the end of `file`. Nothing when the library fails. Throws `std::bad_alloc`.
std::optional<TiffStrips> appendTiffStrips(Bytes& file, const Pixels& pixels, const TiffPacking& packing,
                                           bool bigEndian);

}  // namespace ostra
