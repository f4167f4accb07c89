#pragma once
#include "platform/imageio/codec_door.h"
#include "platform/imageio/codecs/bmp_header.h"

namespace ostra {

/// What the header of a bitmap says its colours mean: an embedded profile, sRGB, or primaries with a gamma.
/// What these pixels cannot have makes the picture untagged. So does a profile that is only named: nothing
/// but the picture is opened for it.
ProfileRecord readBmpColour(ByteView bitmap, const BmpHeader& header, CGColorSpaceModel model,
                            const Limits& limits);

/// The fields of the newest header, from its 56th byte on, that say sRGB, or that a profile of `profileSize`
/// bytes lies at `profileAt`.
Bytes writtenBmpColour(std::uint32_t profileAt, std::uint32_t profileSize);

}  // namespace ostra
