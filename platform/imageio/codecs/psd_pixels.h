#pragma once
#include <cstdint>
#include <vector>

#include "platform/imageio/codecs/psd_structure.h"

namespace ostra {

/// Turns the rows of a document's channels into rows of pixels: 8 bits for 1 and 8 but for Lab, else 16-bit
/// little-endian words.
class PsdPixels {
 public:
  /// `lightIsLinear` of 32-bit samples: keep them so, as the profile says, instead of giving them sRGB's
  /// curve.
  PsdPixels(const PsdStructure& psd, bool lightIsLinear) : psd_(psd), lightIsLinear_(lightIsLinear) {}

  /// Of a channel's row.
  using Planes = std::vector<std::vector<std::uint8_t>>;
  void write(const Planes& planes, std::uint8_t* row) const;

 private:
  void writeBitmap(const Planes& planes, std::uint8_t* row) const;
  void writeIndexed(const Planes& planes, std::uint8_t* row) const;
  void writeLab(const Planes& planes, std::uint8_t* row) const;
  template <class Sample>
  void writeWhole(const Planes& planes, std::uint8_t* row) const;
  void writeFloats(const Planes& planes, std::uint8_t* row) const;

  const PsdStructure& psd_;
  const bool lightIsLinear_;
};

}  // namespace ostra
