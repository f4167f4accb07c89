#pragma once
#include <array>
#include <optional>
#include <vector>

#include "platform/imageio/modules/tiff/tiff_blocks.h"
#include "platform/imageio/modules/tiff/tiff_palette.h"
#include "platform/imageio/modules/tiff/tiff_samples.h"

namespace ostra {

/// Makes pixels of the unpacked samples of a picture, row by row.
///
/// Integers become 8 bits where these hold them, else 16. Floating point becomes 16 bits from 0 to 1: light,
/// under the sRGB curve, unless `storedAsMeant`. Lab becomes ROMM RGB. Alpha stays as it is stored where
/// pixels can say so, else it becomes straight; ink, whose pixels have none, is put on paper.
class TiffPixels {
 public:
  /// Nothing when the directory lacks what its samples refer to.
  static std::optional<TiffPixels> make(const TiffFile& file, const TiffDirectory& directory,
                                        bool storedAsMeant);

  const Layout& layout() const { return layout_; }
  /// A row of the picture, from the row of each block of a band.
  void write(const std::vector<TiffBlock>& blocks, std::uint32_t rowInBand, std::uint8_t* to);

 private:
  using Colour = std::array<std::uint16_t, 4>;

  TiffPixels(const TiffDirectory& directory, bool storedAsMeant);
  void makeLayout();
  bool isCopied() const;
  bool keepsAlpha() const;
  template <class Sample>
  void copy(const TiffBlock& block, const std::uint8_t* row, std::uint8_t* to) const;
  void collectIntegers(const TiffBlock& block, const std::uint8_t* row);
  void collectReals(const TiffBlock& block, const std::uint8_t* row);
  Colour colourOfIntegers(const std::uint16_t* samples) const;
  Colour colourOfReals(const float* samples) const;
  Colour labColour(const std::array<double, 3>& stored) const;
  std::uint16_t alphaOf(std::uint16_t stored) const;
  void put(const Colour& colour, std::uint16_t alpha, std::uint8_t* to) const;

  TiffDirectory directory_;
  bool storedAsMeant_;
  Layout layout_;
  TiffIntegers integers_;
  std::optional<TiffPalette> palette_;
  std::vector<std::uint16_t> row_, unpacked_;
  std::vector<float> realRow_, unpackedReals_;
};

}  // namespace ostra
