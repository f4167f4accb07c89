#pragma once
#include <optional>

#include "platform/imageio/codec_door.h"

namespace ostra {

/// The ICC profile to embed for pixels of `model`; empty when they state none. Nothing when what they state
/// makes no profile for such pixels: then no file is written.
std::optional<Bytes> writtenProfile(const ProfileRecord& profile, CGColorSpaceModel model);

/// Whether pixels of `model` would be taken for others where no profile says what they mean.
bool needsProfile(const ProfileRecord& profile, CGColorSpaceModel model);

}  // namespace ostra
