#pragma once
#include <cstdint>
#include <optional>

#include "platform/imageio/codec_door.h"
#include "platform/imageio/modules/tiff/tiff_file.h"

namespace ostra {

/// What the samples of a picture mean. `light` is XYZ, or Y alone; `other` what the library converts.
enum class TiffColour { gray, rgb, palette, cmyk, lab, light, other };
enum class TiffAlpha { none, straight, premultiplied };

/// The current directory of a TIFF, checked: the numbers fit together.
struct TiffDirectory {
  std::uint32_t width = 0, height = 0;
  std::uint16_t bits = 1;     // of every sample
  std::uint16_t samples = 1;  // of a pixel, alpha and unknown ones too
  std::uint16_t format = SAMPLEFORMAT_UINT;
  std::uint16_t compression = COMPRESSION_NONE;
  std::uint16_t photometry = PHOTOMETRIC_MINISBLACK;
  TiffColour colour = TiffColour::gray;
  TiffAlpha alpha = TiffAlpha::none;
  std::uint16_t alphaSample = 0;  // its place among the samples
  bool separatePlanes = false;
  bool tiled = false;

  bool isReal() const { return format == SAMPLEFORMAT_IEEEFP; }
  /// Samples that are colour.
  std::uint16_t colours() const;
  CGColorSpaceModel model() const;
};

/// Nothing when the directory describes no picture that can be read. Tells the library in which form samples
/// are wanted.
std::optional<TiffDirectory> readTiffDirectory(const TiffFile& file);

}  // namespace ostra
