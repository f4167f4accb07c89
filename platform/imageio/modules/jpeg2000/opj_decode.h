#pragma once
#include "platform/imageio/codec_door.h"
#include "platform/imageio/modules/jpeg2000/codestream.h"
#include "platform/imageio/modules/jpeg2000/opj_memory.h"

namespace ostra {

/// What decoding takes beside the pixels that come out of it: a 32-bit number for each sample, and the
/// library's books of tiles and components.
std::uint64_t opjDecodingBytes(const Codestream& codestream);

/// All components, each with the samples that the codestream claims, or null. Throws `std::bad_alloc`.
OpjImage decodeCodestream(const Codestream& codestream);

}  // namespace ostra
