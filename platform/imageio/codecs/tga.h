#pragma once
#include "platform/imageio/codec.h"

namespace ostra {

/// Truevision's format, versions 1 and 2. A header of 18 bytes without a signature, a text of at most 255
/// bytes, a colour map, the pixels, usually the bottom row first; in version 2 a footer at the very end,
/// which says where an area with texts, the kind of the alpha and a small preview is. One picture, without a
/// profile or a density.
///
/// Read: colour maps, gray and RGB with 8, 15, 16, 24 and 32 bits, run-length coded or not, from any corner.
/// Written: gray with 8, RGB with 24, transparency with 32 bits, run-length coded where the source was. Ink
/// is a fault, and so are colours that would need a profile.
///
/// For want of a signature a file matches when every field of its header makes sense.
bool matchesTga(FileBytes head);
Answer<std::unique_ptr<CodecReader>> openTga(FileBytes file, const Limits& limits);
Answer<Bytes> encodeTga(const Pixels& pixels, const Properties* properties);

/// In {TGA}: 1 for run-length codes, 0 for none.
inline constexpr std::string_view kTgaCompression = "Compression";

}  // namespace ostra
