#pragma once
#include <vector>

#include "platform/imageio/codec_door.h"
#include "platform/imageio/codecs/hdr_header.h"
#include "platform/imageio/codecs/hdr_scanlines.h"

namespace ostra {

/// Gives the light of pixels the values that their space stores for it, 16 bits a component.
class HdrLight {
 public:
  explicit HdrLight(const HdrHeader& header);
  /// sRGB, or the primaries of the file under a power of 2.2.
  const ProfileRecord& profile() const { return profile_; }
  std::array<std::uint16_t, 3> valuesOf(const HdrPixel& pixel) const;

 private:
  std::uint16_t valueOf(double light) const;

  ProfileRecord profile_;
  bool isXyz_;
  /// Of each exponent and mantissa.
  std::vector<std::uint16_t> values_;
};

}  // namespace ostra
