#pragma once
#include "platform/imageio/codec_door.h"
#include "platform/imageio/codecs/png_chunks.h"

namespace ostra {

/// What the chunks before the pixels say the colours mean. Of several: a profile (iCCP), code points (cICP),
/// the sRGB mark, gamma with chromaticities, gamma alone. A profile that these pixels cannot have makes the
/// picture untagged; any other mark that they cannot have, and every chunk that is damaged, leaves it to the
/// next.
ProfileRecord readPngColour(ByteView file, const PngHeader& header, const Limits& limits);

}  // namespace ostra
