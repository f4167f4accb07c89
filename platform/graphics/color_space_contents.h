#pragma once
#include <optional>
#include <string>

#include "platform/graphics/color_space.h"
#include "platform/graphics/shaper.h"

namespace ostra {

struct CGColorSpace::Contents {
  CGColorSpaceModel model = CGColorSpaceModel::unknown;
  int components = 0;
  std::optional<std::string_view> name;
  Bytes icc;
  std::string description;
  /// Where the profile is curves and a matrix alone.
  std::optional<Shaper> shaper;
};

/// Whether values mean the same in both: one object, or the same profile.
bool sameSpace(const CGColorSpace& one, const CGColorSpace& other);

}  // namespace ostra
