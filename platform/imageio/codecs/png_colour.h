#pragma once
#include "platform/imageio/codec_door.h"
#include "platform/imageio/codecs/png_chunks.h"

namespace ostra {

/// What the chunks before the pixels say the colours mean. Of several, as the standard orders them: code
/// points (cICP) where they are those of a named space, a profile (iCCP), the sRGB mark, then gamma with or
/// without chromaticities. A chunk whose checksum is wrong does not count.
ProfileRecord readPngColour(ByteView file, const PngHeader& header, const Limits& limits);

}  // namespace ostra
