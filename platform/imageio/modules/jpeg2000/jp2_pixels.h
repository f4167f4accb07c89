#pragma once
#include "platform/imageio/codec_door.h"
#include "platform/imageio/modules/jpeg2000/jp2_channels.h"
#include "platform/imageio/modules/jpeg2000/opj_memory.h"

namespace ostra {

Layout layoutOf(const Jp2Picture& picture);

/// Puts the picture together from the decoded components: palettes looked up, channels of fewer samples
/// repeated, luminance and differences turned into RGB, every sample scaled to 8 or 16 bits. False when a
/// sample is no entry of its palette.
bool drawJp2(const Jp2Picture& picture, const Codestream& codestream, const opj_image_t& image,
             std::uint8_t* pixels);

}  // namespace ostra
