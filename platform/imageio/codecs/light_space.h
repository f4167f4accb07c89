#pragma once
#include <array>
#include <cstdint>
#include <optional>

#include "platform/imageio/codec_door.h"

namespace ostra {

/// The RGB space in which pixels of linear light are stored with 16 bits a component: that of the primaries
/// that the file tells, under a power of 2.2, or else sRGB. Light from 0 to 1 is kept, brighter is 1.
class LightSpace {
 public:
  /// Red, green, blue and white as x, y pairs. Some that make no space are as good as none.
  explicit LightSpace(const std::optional<std::array<double, 8>>& primaries);
  const ProfileRecord& profile() const { return profile_; }
  std::uint16_t valueOf(double light) const;

 private:
  ProfileRecord profile_;
};

}  // namespace ostra
