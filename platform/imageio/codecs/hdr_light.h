#pragma once
#include <vector>

#include "platform/imageio/codec_door.h"
#include "platform/imageio/codecs/hdr_header.h"
#include "platform/imageio/codecs/hdr_scanlines.h"
#include "platform/imageio/codecs/light_space.h"

namespace ostra {

/// Gives the light of pixels the values that their space stores for it, 16 bits a component.
class HdrLight {
 public:
  explicit HdrLight(const HdrHeader& header);
  const ProfileRecord& profile() const { return space_.profile(); }
  std::array<std::uint16_t, 3> valuesOf(const HdrPixel& pixel) const;

 private:
  LightSpace space_;
  bool isXyz_;
  /// Of each exponent and mantissa.
  std::vector<std::uint16_t> values_;
};

}  // namespace ostra
