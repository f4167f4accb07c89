#pragma once
#include "platform/imageio/codec_door.h"
#include "platform/imageio/modules/jpeg2000/opj_memory.h"
#include "platform/imageio/straight_rows.h"

namespace ostra {

/// Appends a codestream without loss for gray or RGB pixels, opacity last, to the output. False when the
/// library refuses. Throws `std::bad_alloc`.
bool encodeCodestream(const Layout& layout, StraightRows& rows, OpjOutput& output);

}  // namespace ostra
