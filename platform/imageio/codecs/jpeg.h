#pragma once
#include "platform/imageio/codec.h"

namespace ostra {

/// JPEG (ITU-T T.81) of 8 bits: baseline, extended and progressive, Huffman or arithmetic coding; gray, YCbCr, RGB,
/// CMYK and YCCK. Alpha is not stored: pixels that have it are put on white. Written: sequential, or progressive when
/// {JFIF} says that the source was; gray, YCbCr, and CMYK as the Adobe programs store it.
bool matchesJpeg(FileBytes head);
Answer<std::unique_ptr<CodecReader>> openJpeg(FileBytes file, const Limits& limits);
Answer<Bytes> encodeJpeg(const Pixels& pixels, const Properties* properties);

/// The quality scale of the IJG library, 1 to 100, for a quality of 0 to 1. 0.9, the quality of every rewrite, is 92: a
/// photograph rewritten once shows no difference.
int jpegQuality(double quality);

}  // namespace ostra
