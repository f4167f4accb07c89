#pragma once
#include <memory>

#include "platform/imageio/codec.h"

namespace ostra {

/// Cameras' raw files and DNG, read only, developed to 16 bits. A TIFF file that holds no raw pixels is not
/// one of them, whoever wrote it.
Answer<std::unique_ptr<CodecReader>> openRaw(FileBytes file, const Limits& limits);

}  // namespace ostra
