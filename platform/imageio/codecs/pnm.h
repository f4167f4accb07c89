#pragma once
#include "platform/imageio/codec.h"

namespace ostra {

/// The portable formats of Netpbm: bits (P1, P4), gray (P2, P5), RGB (P3, P6) as text or bytes, and PAM (P7)
/// with gray or RGB and straight alpha. The first two bytes, a header of words and numbers with comments, the
/// samples from the top row on, two bytes each, the high one first, where the largest is above 255. Files
/// hold several pictures one behind the other, and nothing else: no profile, no density.
///
/// Written: gray as P5, RGB as P6, transparency as P7, with 8 or 16 bits. Ink is a fault, and so are colours
/// that would need a profile.
bool matchesPnm(FileBytes head);
Answer<std::unique_ptr<CodecReader>> openPnm(FileBytes file, const Limits& limits);
Answer<Bytes> encodePnm(const Pixels& pixels, const Properties* properties);

}  // namespace ostra
