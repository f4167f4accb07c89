#pragma once
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/modules/raw/raw_container.h"
#include "platform/imageio/modules/raw/raw_library.h"

namespace ostra {

/// The blocks of a raw file: of one that is built as TIFF is, the directories of Exif and GPS and the XMP
/// packet; of a Fujifilm the Exif of its preview; of a Minolta the TIFF block of its head. Where there is no
/// such thing, or it is malformed, what the library knows of the exposure.
Carrier readRawBlocks(FileBytes file, const RawContainer& container, const RawLibrary& library,
                      const Limits& limits);

}  // namespace ostra
