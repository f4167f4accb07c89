#pragma once
#include "platform/imageio/codec.h"

namespace ostra {

/// GIF 87a and 89a. Read: the first frame on a transparent canvas as large as the logical screen, as browsers
/// show it, or larger where the frame goes beyond the screen: no stored pixel is cut away. Palettes are
/// expanded to RGB. Written: one frame of at most 256 entries, gray and RGB, pixels of less than half opacity
/// transparent, the others opaque; CMYK and sides above 65,535 are a fault.
bool matchesGif(FileBytes head);
Answer<std::unique_ptr<CodecReader>> openGif(FileBytes file, const Limits& limits);
Answer<Bytes> encodeGif(const Pixels& pixels, const Properties* properties);

}  // namespace ostra
