#pragma once
#include <memory>

#include "platform/imageio/codec.h"

namespace ostra {

/// JPEG XL: a codestream in boxes or alone. Read only.
Answer<std::unique_ptr<CodecReader>> openJxl(FileBytes file, const Limits& limits);

}  // namespace ostra
