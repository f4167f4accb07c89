#include <array>
#include <string>

#include "tests/platform/imageio/bmp_files.h"
#include "tests/platform/imageio/gif_files.h"
#include "tests/platform/imageio/psd_files.h"
#include "tests/system/bombs.h"

namespace ostra::test {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kMega = std::size_t{1} << 20;

/// A frame of one pixel on a screen.
Bytes gifScreen(std::uint32_t width, std::uint32_t height, unsigned frames = 1) {
  GifParts parts;
  parts.screenWidth = width, parts.screenHeight = height;
  parts.width = parts.height = 1;
  parts.frames = frames;
  return gifOf(parts);
}

/// Clear codes of nine bits, which no entry follows.
Bytes gifThatBeginsAgainAndAgain() {
  GifParts parts;
  parts.data = gifDataOfCodes(std::vector<GifCode>(8 * kMega, GifCode{256, 9}), 8);
  return gifOf(parts);
}

/// `data` in runs, under 256 colours.
Bytes runLengthBitmap(std::uint32_t side, const Bytes& data) {
  BmpParts parts;
  parts.width = side, parts.height = static_cast<std::int32_t>(side);
  parts.bits = 8, parts.compression = 1;
  parts.palette = Bytes(1024);
  parts.data = data;
  return bmpFile(parts);
}

Bytes bitmap(std::uint32_t width, std::int32_t height, unsigned bits) {
  BmpParts parts;
  parts.width = width, parts.height = height, parts.bits = bits;
  parts.data = Bytes(100);
  return bmpFile(parts);
}

/// So many entries that all lead to the same contents, which claim to be of 256 pixels a side.
Bytes icon(unsigned entries, const Bytes& contents) {
  Bytes file;
  for (const unsigned number : {0U, 1U, entries}) appendLittle(file, number, 2);
  for (unsigned i = 0; i < entries; ++i) {
    for (const unsigned number : {0U, 0U, 1U, 32U}) appendLittle(file, number, 2);
    appendLittle(file, contents.size(), 4);
    appendLittle(file, 6 + 16 * entries, 4);
  }
  return joined({file, contents});
}

Bytes targa(unsigned kind, unsigned width, unsigned height, const Bytes& data) {
  Bytes file(18);
  file[2] = static_cast<std::uint8_t>(kind);
  file[12] = static_cast<std::uint8_t>(width), file[13] = static_cast<std::uint8_t>(width >> 8);
  file[14] = static_cast<std::uint8_t>(height), file[15] = static_cast<std::uint8_t>(height >> 8);
  file[16] = 24, file[17] = 0x20;
  return joined({file, data});
}

Bytes document(std::uint32_t side, bool isLarge, const Bytes& samples) {
  PsdParts parts;
  parts.width = parts.height = side;
  parts.isLarge = isLarge;
  parts.samples = samples;
  return psdOf(parts);
}

/// Runs of a byte alone cannot give so much: the rows' lengths are all that it has.
Bytes packedDocument(std::uint32_t side) {
  Bytes file = document(side, false, Bytes(200'000));
  const std::size_t pixels = file.size() - 200'002;
  file[pixels + 1] = 1;
  return file;
}

Bytes radiance(std::string_view header, std::string_view size) {
  return joined({bytesOfText("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n"),
                 bytesOfText(header),
                 {'\n'},
                 bytesOfText(size),
                 Bytes(100)});
}

Bytes text(std::string_view words, std::size_t spaces = 0) {
  return joined({bytesOfText(words), Bytes(spaces, ' ')});
}

}  // namespace

std::vector<Bomb> gifBombs() {
  return {
      {"GifOf65535Sides", "gif", [] { return gifScreen(65535, 65535); }},
      {"GifOfNineHundredMegapixels", "gif", [] { return gifScreen(30000, 30000); }},
      {"GifWhoseCodesBeginAgainAndAgain", "gif", gifThatBeginsAgainAndAgain},
      {"GifOfAHundredThousandFrames", "gif", [] { return gifScreen(1000, 1000, 100'000); }},
      {"GifOfAMillionEmptyComments", "gif",
       [] {
         GifParts parts;
         Bytes comments;
         for (int i = 0; i < 1'000'000; ++i) comments.insert(comments.end(), {0x21, 0xFE, 0});
         parts.extensions = std::move(comments);
         return gifOf(parts);
       },
       "47x33"},
  };
}

std::vector<Bomb> bitmapBombs() {
  return {
      {"BmpOfTwoToThe31Sides", "bmp", [] { return bitmap(0x7FFFFFFF, 0x7FFFFFFF, 32); }},
      {"BmpOfTheLowestHeight", "bmp", [] { return bitmap(1, INT32_MIN, 1); }},
      {"BmpOfNineHundredMegapixelsInRuns", "bmp",
       [] {
         return runLengthBitmap(30000, {0, 1});
       }},
      {"BmpWhoseRunsGoOn", "bmp", [] { return runLengthBitmap(16, Bytes(20 * kMega, 0xFF)); }},
      {"IcoOf65535Entries", "ico", [] { return icon(65535, Bytes(40)); }},
      {"IcoOfAGiantPng", "ico",
       [] {
         Bytes png = pngBombs().front().file();
         return icon(1, png);
       }},
      {"IcoOfAGiantBitmap", "ico",
       [] {
         BmpParts parts;
         parts.width = 60000, parts.height = 120000, parts.bits = 32;
         parts.data = Bytes(100);
         return icon(1, bitmapOf(parts));
       }},
      {"TgaOf65535Sides", "tga", [] { return targa(2, 65535, 65535, Bytes(100)); }},
      {"TgaOfNineHundredMegapixelsInRuns", "tga", [] { return targa(10, 30000, 30000, Bytes(100, 0xFF)); }},
      {"PnmOfTwoToThe32Sides", "ppm", [] { return text("P6\n4294967295 4294967295\n255\n", 100); }},
      {"PnmOfNineHundredMegapixels", "pgm", [] { return text("P2\n30000 30000\n255\n", 100); }},
      {"PnmOfAnEndlessNumber", "pgm",
       [] {
         return joined({text("P5\n1"), Bytes(20 * kMega, '0'), text(" 1\n255\n", 1)});
       }},
      {"PnmOfBlanks", "pgm", [] { return text("P2\n16 16\n255\n", 20 * kMega); }},
  };
}

std::vector<Bomb> readOnlyBombs() {
  return {
      {"PsbOf300000Sides", "psb", [] { return document(300'000, true, Bytes(100)); }},
      {"PsdOfNineHundredMegapixels", "psd", [] { return document(30000, false, Bytes(100)); }},
      {"PsdOfNineHundredMegapixelsInRuns", "psd", [] { return packedDocument(30000); }},
      {"PsdOfAMillionResources", "psd",
       [] {
         PsdParts parts;
         const Bytes one = psdResource(4000, {});
         for (int i = 0; i < 1'000'000; ++i)
           parts.resources.insert(parts.resources.end(), one.begin(), one.end());
         parts.samples = Bytes(10);
         return psdOf(parts);
       }},
      {"HdrOfTwoToThe31Sides", "hdr", [] { return radiance({}, "-Y 2147483647 +X 2147483647\n"); }},
      {"HdrOfNineHundredMegapixels", "hdr", [] { return radiance({}, "-Y 30000 +X 30000\n"); }},
      {"HdrOfAnEndlessHeader", "hdr", [] { return radiance(std::string(20 * kMega, 'x'), {}); }},
      {"HdrOfMillionsOfLines", "hdr",
       [] {
         std::string lines;
         for (int i = 0; i < 1'000'000; ++i) lines += "EXPOSURE=1\n";
         return radiance(lines, "-Y 4 +X 4\n");
       }},
  };
}

}  // namespace ostra::test
