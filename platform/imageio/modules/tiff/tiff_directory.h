#pragma once
#include <cstdint>
#include <optional>

#include "platform/imageio/codec_door.h"
#include "platform/imageio/modules/tiff/tiff_file.h"

namespace ostra {

/// What the samples of a picture mean.
enum class TiffColour { gray, rgb, palette, cmyk, lab, other };
enum class TiffAlpha { none, straight, premultiplied };

/// The first directory of a TIFF, checked: the numbers fit together.
struct TiffDirectory {
  std::uint32_t width = 0, height = 0;
  std::uint16_t bits = 1;     // of every sample
  std::uint16_t samples = 1;  // of a pixel, alpha and unknown ones too
  std::uint16_t format = SAMPLEFORMAT_UINT;
  std::uint16_t compression = COMPRESSION_NONE;
  TiffColour colour = TiffColour::gray;
  TiffAlpha alpha = TiffAlpha::none;
  std::uint16_t alphaSample = 0;  // its place among the samples
  bool whiteIsZero = false;
  bool labOfProfiles = false;
  bool separatePlanes = false;
  bool tiled = false;

  /// Samples that are colour.
  std::uint16_t colours() const;
  CGColorSpaceModel model() const;
  /// 16 where the samples hold more than 8 bits can, else 8.
  std::uint8_t decodedBits() const;
};

/// Nothing when the directory describes no picture.
std::optional<TiffDirectory> readTiffDirectory(const TiffFile& file);

}  // namespace ostra
