#pragma once
#include "platform/imageio/codec_door.h"

namespace ostra::test {

/// What `cjpeg` makes of a soft picture of the usual odd size; `words` are its options.
Bytes jpegOf(const std::vector<std::string>& words, unsigned components = 3);
/// The samples of djpeg, gray or RGB of 8 bits; throws with its words when it reads none.
Bytes samplesByDjpeg(const Bytes& file);
/// The same of ours, a skipped fourth left out.
Bytes colourSamples(const Pixels& pixels);
/// The file without the segment that begins with `head`.
Bytes withoutSegment(Bytes file, std::string_view head);

}  // namespace ostra::test
