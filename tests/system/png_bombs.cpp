#include "tests/platform/imageio/picture_files.h"
#include "tests/support/icc_builder.h"
#include "tests/system/bombs.h"
#include "tests/system/deflated_zeros.h"

namespace ostra::test {
namespace {

/// Of sixteen gray rows of sixteen, each behind its filter.
constexpr std::size_t kPixels = 272;
constexpr std::size_t kMega = std::size_t{1} << 20;
const Bytes kSignature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

Bytes header(std::uint32_t width, std::uint32_t height, std::uint8_t bits, std::uint8_t colour,
             bool interlaced = false) {
  Bytes data(13);
  putNumber(data, 0, width);
  putNumber(data, 4, height);
  data[8] = bits, data[9] = colour, data[12] = interlaced ? 1 : 0;
  return pngChunk("IHDR", data);
}

/// Chunks between the signature and the end.
Bytes png(std::initializer_list<Bytes> chunks) {
  return joined({kSignature, joined(chunks), pngChunk("IEND", {})});
}

/// Sixteen gray pixels a side, black.
Bytes smallPicture(const Bytes& chunks) {
  return png({header(16, 16, 8, 0), chunks, pngChunk("IDAT", deflatedZeros(kPixels))});
}

Bytes repeated(const Bytes& part, std::size_t times) {
  Bytes all;
  all.reserve(part.size() * times);
  for (std::size_t i = 0; i < times; ++i) all.insert(all.end(), part.begin(), part.end());
  return all;
}

Bytes text(std::string_view words) { return bytesOfText(words); }
/// A keyword, a NUL, the method 0 and a compressed text.
Bytes compressed(std::string_view type, std::string_view head, std::size_t size) {
  return pngChunk(type, joined({text(head), deflatedZeros(size)}));
}

Bytes numbered(std::uint32_t number) {
  Bytes bytes(4);
  putNumber(bytes, 0, number);
  return bytes;
}

}  // namespace

std::vector<Bomb> pngBombs() {
  using namespace std::string_view_literals;
  return {
      {"PngOfFourThousandMegapixels", "png",
       [] {
         return png({header(65500, 65500, 1, 0), pngChunk("IDAT", deflatedZeros(100))});
       }},
      {"PngOfNineHundredMegapixelsInAHundredBytes", "png",
       [] {
         return png({header(30000, 30000, 8, 2), pngChunk("IDAT", deflatedZeros(100))});
       }},
      {"PngOfTwoToThe31Sides", "png",
       [] {
         return png({header(0x7FFFFFFF, 0x7FFFFFFF, 16, 6), pngChunk("IDAT", deflatedZeros(100))});
       }},
      {"PngInterlacedWithoutPixels", "png",
       [] {
         return png({header(2000, 2000, 1, 0, true), pngChunk("IDAT", deflatedZeros(9000))});
       }},
      {"PngWhosePixelsGoOnForHundredsOfMegabytes", "png",
       [] {
         return png({header(16, 16, 8, 0), pngChunk("IDAT", deflatedZeros(300 * kMega))});
       }},
      {"PngWhosePixelsComeByteByByte", "png",
       [] {
         const Bytes stream = deflatedZeros(kPixels);
         Bytes chunks;
         for (const std::uint8_t byte : stream) {
           const Bytes part = joined({repeated(pngChunk("IDAT", {}), 3000), pngChunk("IDAT", Bytes{byte})});
           chunks.insert(chunks.end(), part.begin(), part.end());
         }
         return png({header(16, 16, 8, 0), chunks});
       },
       "16x16"},
      {"PngWithACompressedText", "png",
       [] { return smallPicture(compressed("zTXt", "Comment\0\0"sv, 300 * kMega)); }},
      {"PngWithACompressedInternationalText", "png",
       [] { return smallPicture(compressed("iTXt", "XML:com.adobe.xmp\0\1\0\0\0"sv, 300 * kMega)); }},
      {"PngWithManyCompressedTexts", "png",
       [] { return smallPicture(repeated(compressed("zTXt", "Comment\0\0"sv, 8 * kMega), 40)); }},
      {"PngWithACompressedProfile", "png",
       [] { return smallPicture(compressed("iCCP", "p\0\0"sv, 300 * kMega)); }},
      {"PngWithAHundredThousandTexts", "png",
       [] { return smallPicture(repeated(pngChunk("tEXt", text("Title\0a"sv)), 100'000)); }, "16x16"},
      {"PngWithAHundredThousandPrivateChunks", "png",
       [] { return smallPicture(repeated(pngChunk("prVt", text("a")), 100'000)); }, "16x16"},
      {"PngWithAHundredThousandEmptyChunks", "png",
       [] { return smallPicture(repeated(pngChunk("tIME", {}), 100'000)); }, "16x16"},
      {"PngWhoseChunkIsTwoGigabytesLong", "png",
       [] {
         return joined({kSignature, header(16, 16, 8, 0), numbered(0x7FFFFFFF), text("IDAT"), Bytes(100)});
       }},
      {"PngWhoseChunkIsLongerThanAllowed", "png",
       [] {
         return joined({kSignature, header(16, 16, 8, 0), numbered(0xFFFFFFFF), text("tEXt"), Bytes(100)});
       }},
      {"PngOfTwoToThe31Frames", "png",
       [] {
         return smallPicture(pngChunk("acTL", joined({numbered(0x7FFFFFFF), numbered(0)})));
       }},
      {"PngOfAHundredThousandFrames", "png",
       [] {
         return smallPicture(joined({pngChunk("acTL", joined({numbered(1), numbered(0)})),
                                     repeated(pngChunk("fcTL", Bytes(26)), 100'000)}));
       }},
      {"PngWithoutItsPalette", "png",
       [] {
         return png({header(16, 16, 8, 3), pngChunk("IDAT", deflatedZeros(kPixels))});
       }},
      {"PngWhosePaletteIsTooLong", "png",
       [] {
         return png(
             {header(16, 16, 1, 3), pngChunk("PLTE", Bytes(30'000)), pngChunk("IDAT", deflatedZeros(48))});
       }},
      {"PngWithMoreTransparencyThanPalette", "png",
       [] {
         return png({header(16, 16, 1, 3), pngChunk("PLTE", Bytes(6)), pngChunk("tRNS", Bytes(60'000)),
                     pngChunk("IDAT", deflatedZeros(48))});
       }},
      {"PngWhoseRawProfileIsFourGigabytesLong", "png",
       [] {
         return smallPicture(pngChunk("tEXt", text("Raw profile type exif\0\nexif\n4294967295\n4d4d\n"sv)));
       },
       "16x16"},
  };
}

}  // namespace ostra::test
