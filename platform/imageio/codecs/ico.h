#pragma once
#include "platform/imageio/codec.h"

namespace ostra {

/// Icons and cursors of Windows: a directory of pictures of one thing in several sizes, each a PNG file, or a
/// bitmap without a file header whose height counts a second, one-bit picture below the first. That one
/// says which pixels are transparent where the first has no alpha.
///
/// The count is that of the directory. Picture 0 is the largest that can be taken apart, of several the one
/// with the most bits, then the first; others are not decoded. Written: one picture of at most 256 pixels a
/// side, as a bitmap of 32 bits, or as a PNG where it has 256, or colours or metadata that only a PNG holds.
/// Ink is a fault. Cursors are only read: a hot spot has no place in a picture.
bool matchesIco(FileBytes head);
Answer<std::unique_ptr<CodecReader>> openIco(FileBytes file, const Limits& limits);
Answer<Bytes> encodeIco(const Pixels& pixels, const Properties* properties);

bool matchesCur(FileBytes head);
Answer<std::unique_ptr<CodecReader>> openCur(FileBytes file, const Limits& limits);

}  // namespace ostra
