#pragma once
#include "platform/imageio/decoder/messages.h"

namespace ostra {

/// The pixels that a decoder said it left in the memory file, once everything it said has been checked: the
/// process has ended, nobody can change size or contents any more, and the numbers fit each other, the file
/// and what was claimed at the opening. `crashed` for whatever does not.
Answer<Pixels> believedPixels(DecodedPixels said, const Opened& opened, int pixelFile);

}  // namespace ostra
