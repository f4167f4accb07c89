#pragma once
#include "platform/imageio/modules/exr/exr_channels.h"
#include "platform/imageio/modules/exr/exr_file.h"

namespace ostra {

/// What the file says its colours are.
ProfileRecord readExrColour(const ExrFile& file, const ExrChannels& channels);
/// The picture, which is the display window: where the data window leaves it there is nothing. Throws what
/// the library throws for a damaged file.
Answer<Pixels> decodeExrPixels(ExrFile& file, const ExrChannels& channels, const Limits& limits);

}  // namespace ostra
