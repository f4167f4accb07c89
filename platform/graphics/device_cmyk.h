#pragma once
#include <string>
#include <vector>

#include "platform/foundation/bytes.h"
#include "platform/graphics/pixel_chunk.h"

namespace ostra {

/// The profile of CMYK without one: color/icc/ghostscript/default_cmyk.icc in the first of these folders that
/// has it and where it is a usable CMYK profile. Empty when there is none.
Bytes cmykProfileIn(const std::vector<std::string>& dataFolders);

/// The same from the folders of XDG_DATA_HOME and XDG_DATA_DIRS, looked up once.
const Bytes& systemCMYKProfile();

/// The plain formula, used where no profile is installed: R = (1 - C)(1 - K), as sRGB values. In place.
void plainRGBFromCMYK(PixelChunk& chunk);
/// Its inverse with the most black: K = 1 - max(R, G, B). In place.
void plainCMYKFromRGB(PixelChunk& chunk);

}  // namespace ostra
