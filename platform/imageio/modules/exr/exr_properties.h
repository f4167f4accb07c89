#pragma once
#include "platform/imageio/modules/exr/exr_channels.h"
#include "platform/imageio/modules/exr/exr_file.h"

namespace ostra {

/// Size and depth, the density, and what the standard attributes of the first part tell of how the picture
/// was taken. The channels are none where they make no picture.
Properties readExrProperties(const ExrFile& file, const std::optional<ExrChannels>& channels,
                             const Limits& limits);

}  // namespace ostra
