#pragma once
#include "platform/imageio/codecs/heif_meta.h"

namespace ostra {

/// Whether each picture that is put together of others (a grid or an overlay, ISO/IEC 23008-12, 6.6.2) says
/// in its own content the size that its properties say: what puts it together takes memory for the former.
bool derivedSizesAgree(ByteView file, const HeifMeta& meta);

}  // namespace ostra
