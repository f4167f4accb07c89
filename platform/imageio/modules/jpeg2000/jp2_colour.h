#pragma once
#include <optional>

#include "platform/imageio/codec_door.h"
#include "platform/imageio/modules/jpeg2000/jp2_boxes.h"

namespace ostra {

/// What the colour channels of a picture are.
struct Jp2Space {
  CGColorSpaceModel model = CGColorSpaceModel::rgb;
  /// Luminance and two differences, as sYCC (IEC 61966-2-1, amendment 1) has them.
  bool isYcc = false;
  ProfileRecord profile = Untagged{};

  unsigned colours() const {
    return model == CGColorSpaceModel::monochrome ? 1 : model == CGColorSpaceModel::cmyk ? 4 : 3;
  }
};

/// The space of a picture with so many channels, of which `differencesAreCoarse` tells that the second and
/// third have fewer samples. Nothing when it is told, and only in ways that are not known here: taken for
/// another space, the picture would be a lie. Throws `LimitExceeded`.
std::optional<Jp2Space> jp2SpaceOf(const Jp2Boxes& boxes, std::size_t channels, bool differencesAreCoarse,
                                   const Limits& limits);

}  // namespace ostra
