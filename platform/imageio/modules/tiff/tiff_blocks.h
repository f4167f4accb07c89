#pragma once
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/imageio/modules/tiff/tiff_directory.h"

namespace ostra {

/// A strip or tile of one plane, or of all, unpacked by the library.
struct TiffBlock {
  std::uint32_t x = 0;      // its first column
  std::uint32_t width = 0;  // in pixels, some of which may lie outside the picture
  std::uint16_t firstSample = 0;
  std::uint16_t samples = 1;  // of a pixel, that it holds
  std::size_t bytesPerRow = 0;
  Bytes bytes;
};

/// The rows of a picture in bands: those that one strip, or one row of tiles, holds of all planes. Of a strip
/// that is large a band is one row, so that nobody needs the memory for a second picture.
class TiffBands {
 public:
  TiffBands(const TiffFile& file, const TiffDirectory& directory);

  /// Memory that the largest band takes.
  std::uint64_t bytes() const;
  /// The next band's rows; 0 after the last. Nothing when a part of it is missing or damaged.
  std::optional<std::uint32_t> next();
  const std::vector<TiffBlock>& blocks() const { return blocks_; }

 private:
  bool readRow();
  bool readStrips(std::uint32_t rows);
  bool readTiles();
  bool isSound(std::uint32_t number, std::uint64_t size) const;

  const TiffFile& file_;
  const TiffDirectory& directory_;
  std::uint32_t rowsPerBand_, rowsPerStrip_;
  bool byRows_ = false;
  std::uint32_t y_ = 0;
  std::vector<TiffBlock> blocks_;
};

}  // namespace ostra
