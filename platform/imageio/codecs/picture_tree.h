#pragma once
#include <cstdint>

#include "platform/foundation/value.h"
#include "platform/imageio/codec_door.h"

namespace ostra {

/// What every format tells about a picture. `depth` is that of the file, before any expansion.
struct PictureFacts {
  std::uint32_t width = 0, height = 0;
  unsigned depth = 0;
  CGColorSpaceModel model = CGColorSpaceModel::rgb;
  bool hasAlpha = false;
  bool isIndexed = false;
};

/// The top level of a picture's properties: size, depth, colour model, the name of a stated profile, and the
/// flags that are true.
Dictionary pictureTree(const PictureFacts& facts, const ProfileRecord& profile);

/// The whole number that a density stands for when its file could not say it more closely, else the density
/// itself. `step` is the smallest difference that the file can say.
double roundedDensity(double dotsPerInch, double step);

}  // namespace ostra
