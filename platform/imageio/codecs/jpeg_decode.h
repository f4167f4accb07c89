#pragma once
#include "platform/imageio/codec.h"
#include "platform/imageio/codecs/jpeg_segments.h"

namespace ostra {

/// The pixels, without a profile. Colour comes with a skipped fourth byte, ink as amounts (0 is none),
/// whatever the file inverts. The end marker may be missing when everything that a single scan needs is
/// there; a file of several scans without it is a fault, as is every warning that `JpegErrors` does not call
/// harmless.
Answer<Pixels> decodeJpegPixels(ByteView file, const JpegFrame& frame, const Limits& limits);

}  // namespace ostra
