#pragma once
#include "platform/imageio/codec_door.h"
#include "platform/imageio/codecs/png_chunks.h"

namespace ostra {

/// The properties of the default image: the header's facts, the {PNG} group, and the metadata blocks. What a
/// chunk with a wrong checksum says is left out.
Properties readPngProperties(ByteView file, const PngStructure& structure, const ProfileRecord& profile,
                             const Limits& limits);

}  // namespace ostra
