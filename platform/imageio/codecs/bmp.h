#pragma once
#include "platform/imageio/codec.h"

namespace ostra {

/// Windows bitmaps, as the headers of Windows 2 to 5 and of OS/2 1 and 2 describe them. A file header of 14
/// bytes begins with "BM" and says where the pixels are; then come a bitmap header, whose first number is its
/// size, a palette, the pixels, usually the bottom row first, and perhaps a profile. It holds one picture and
/// no metadata but its density.
///
/// Read: 1, 2, 4 and 8 bits with a palette, 16, 24 and 32 bits, any masks, run-length codes of 4, 8 and 24
/// bits. Not read: Huffman codes, pictures of other formats inside, ink. Written: gray with a palette of 256
/// grays, RGB with 24 bits, transparency with 32 bits and masks; all with 8 bits a sample. Ink is a fault.
bool matchesBmp(FileBytes head);
Answer<std::unique_ptr<CodecReader>> openBmp(FileBytes file, const Limits& limits);
Answer<Bytes> encodeBmp(const Pixels& pixels, const Properties* properties);

}  // namespace ostra
