#pragma once
#include "platform/imageio/codec.h"

namespace ostra {

/// JPEG (ITU-T T.81) of 8 bits. Read: baseline, extended and progressive, Huffman or arithmetic coding; gray,
/// YCbCr, RGB, CMYK and YCCK. Written: baseline with the usual Huffman tables (progressive files and tables
/// made to measure take several times as long for a tenth of the size); gray, YCbCr, and YCCK as the Adobe
/// programs store it. Alpha is not stored: pixels that have it are put on white.
bool matchesJpeg(FileBytes head);
Answer<std::unique_ptr<CodecReader>> openJpeg(FileBytes file, const Limits& limits);
Answer<Bytes> encodeJpeg(const Pixels& pixels, const Properties* properties);

/// The quality scale of the IJG library, 1 to 100, for a quality of 0 to 1. 0.9, the quality of every
/// rewrite, is 92: a photograph rewritten once shows no difference.
int jpegQuality(double quality);

}  // namespace ostra
