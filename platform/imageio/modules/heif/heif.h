#pragma once
#include <memory>

#include "platform/imageio/codec.h"

namespace ostra {

// HEIF pictures (ISO/IEC 23008-12), coded as HEVC: one or more items, whose properties hold size, profile,
// rotation and cropping; Exif and XMP are items too. The three differ in the type that they tell.
Answer<std::unique_ptr<CodecReader>> openHeic(FileBytes file, const Limits& limits);
Answer<std::unique_ptr<CodecReader>> openHeics(FileBytes file, const Limits& limits);
Answer<std::unique_ptr<CodecReader>> openHeif(FileBytes file, const Limits& limits);

/// HEVC with 8 bits, or 10 for surfaces of 16; gray as one plane.
Answer<Bytes> encodeHeic(const Pixels& pixels, const Properties* properties);

/// Loads all that the libraries load late, and gives them our HEVC decoder. False when they refuse.
bool readyHeifLibrary();

}  // namespace ostra
