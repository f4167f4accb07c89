#pragma once
#include "platform/graphics/color_space.h"
#include "platform/imageio/codec_door.h"

namespace ostra {

/// The space that a file states for pixels of `model`. Null when it states none, or one that cannot be meant:
/// a profile that makes no space, or one of another model (a gray profile on RGB pixels).
CGColorSpaceRef statedSpace(const ProfileRecord& profile, CGColorSpaceModel model);

/// What pixels mean whose file states nothing: sRGB, the gray space with its curve, or device CMYK.
CGColorSpaceRef defaultSpace(CGColorSpaceModel model);

/// How a space crosses the door on the way out: by its name where it has one, else by its profile's bytes.
ProfileRecord profileOfSpace(const CGColorSpaceRef& space);

}  // namespace ostra
