#include <algorithm>
#include <array>
#include <string>

#include "tests/platform/imageio/modules/boxes.h"
#include "tests/platform/imageio/modules/exr_files.h"
#include "tests/platform/imageio/modules/heif_files.h"
#include "tests/platform/imageio/modules/raw_files.h"
#include "tests/platform/imageio/modules/tiff_files.h"
#include "tests/system/bombs.h"
#include "tests/system/deflated_zeros.h"

namespace ostra::test {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kMega = std::size_t{1} << 20;
const Bytes kFourGiga = {0xFF, 0xFF, 0xFF, 0xFF};

/// A small picture of noise and colours that a tool makes with "IN" and "OUT" in its arguments.
Bytes madeBy(std::vector<std::string> command, const std::string& extension) {
  const TemporaryFolder folder;
  run({"convert", "-size", "47x33", "-seed", "3", "plasma:tomato-steelblue", "-depth", "8",
       folder.path("a.png")});
  for (std::string& word : command) {
    if (word == "IN") word = folder.path("a.png");
    if (word == "OUT") word = folder.path("a." + extension);
  }
  run(command);
  return readFile(folder.path("a." + extension));
}

Bytes sides(std::size_t width, std::size_t height) { return joined({big32(width), big32(height)}); }

// TIFF

/// One strip of gray pixels, packed by method 5 (LZW) or 8 (deflate), 1 being none.
TiffBuilder::Directory tiff(std::uint32_t side, std::uint16_t packing, Bytes strip) {
  const TiffBuilder builder;
  return with(builder.picture(side, side, 8, 1, 1, std::move(strip)), builder.shorts(259, {packing}));
}

Bytes tiffFileOf(const TiffBuilder::Directory& directory) { return TiffBuilder().build({directory}); }

/// Tables that begin again and again: nine bits a code, none of which gives a pixel.
Bytes emptyLzw(std::size_t codes) { return packedBits(std::vector<std::uint64_t>(codes, 256), 9, codes); }

/// The count of the entry of a tag, in a file of little-endian words of four bytes, is 2^32 - 1.
Bytes withGiantCount(Bytes file, std::uint16_t tag) {
  const std::size_t count = file[8];
  for (std::size_t at = 10; at < 10 + 12 * count; at += 12) {
    if (file[at] == (tag & 0xFF) && file[at + 1] == tag >> 8)
      std::copy(kFourGiga.begin(), kFourGiga.end(), file.begin() + static_cast<std::ptrdiff_t>(at + 4));
  }
  return file;
}

Bytes bigTiffOfSoManyEntries(std::uint64_t count) {
  const TiffBuilder builder(false, true);
  Bytes file = builder.build({builder.picture(16, 16, 8, 1, 1, Bytes(256))});
  const Bytes number = builder.number(count, 8);
  std::copy(number.begin(), number.end(), file.begin() + 16);
  return file;
}

// JPEG 2000

/// The size marker's own numbers: the picture's and the tiles' sides.
Bytes jp2(const Bytes& picture, const Bytes& tile) {
  Bytes file =
      withBytesAt(madeBy({"opj_compress", "-i", "IN", "-o", "OUT"}, "jp2"), "\xFF\x4F\xFF\x51"sv, 8, picture);
  if (!tile.empty()) file = withBytesAt(std::move(file), "\xFF\x4F\xFF\x51"sv, 24, tile);
  const Bytes upright(picture.begin() + 4, picture.end()), across(picture.begin(), picture.begin() + 4);
  return withBytesAt(std::move(file), "ihdr", 4, joined({upright, across}));
}

// JPEG XL

/// The beginning of a codestream: sides of 1 to 2^30, then the defaults, then bytes that mean little.
Bytes jxl(std::uint32_t width, std::uint32_t height) {
  Bytes file = {0xFF, 0x0A};
  std::size_t used = 0;
  const auto append = [&](std::uint32_t value, unsigned bits) {
    for (unsigned i = 0; i < bits; ++i, ++used) {
      if (used % 8 == 0) file.push_back(0);
      file.back() |= static_cast<std::uint8_t>((value >> i & 1) << used % 8);
    }
  };
  append(0, 1);  // not a small one
  append(3, 2), append(height - 1, 30);
  append(0, 3);  // no ratio
  append(3, 2), append(width - 1, 30);
  append(1, 1), append(1, 1);
  return joined({file, randomBytes(300)});
}

// WebP

Bytes riff(const Bytes& chunks) {
  const TiffBuilder little;
  return joined({bytesOfText("RIFF"), little.number(chunks.size() + 4, 4), bytesOfText("WEBP"), chunks});
}

Bytes webpChunk(std::string_view type, const Bytes& content) {
  const TiffBuilder little;
  return joined({bytesOfText(type), little.number(content.size(), 4), content, Bytes(content.size() % 2)});
}

/// The sides of a lossless picture, of 14 bits each. It is flat: no pixel of it takes a bit.
Bytes flatWebp(std::uint32_t side) {
  const TemporaryFolder folder;
  run({"convert", "-size", "16x16", "xc:tomato", folder.path("a.png")});
  run({"cwebp", "-quiet", "-lossless", folder.path("a.png"), "-o", folder.path("a.webp")});
  const std::uint32_t bits = (side - 1) | (side - 1) << 14;
  const Bytes file = readFile(folder.path("a.webp"));
  const std::uint8_t last = file[positionOf("VP8L", file) + 12];
  Bytes sizes = TiffBuilder().number(bits, 4);
  sizes[3] |= last & 0xF0;
  return withBytesAt(file, "VP8L", 9, sizes);
}

Bytes webpCanvas(const Bytes& sidesOf24Bits) {
  const Bytes small = flatWebp(16);
  const Bytes picture(small.begin() + 12, small.end());
  return riff(joined({webpChunk("VP8X", joined({Bytes(4), sidesOf24Bits})), picture}));
}

// HEIF

Bytes heic() { return madeBy({"heif-enc", "IN", "-o", "OUT"}, "heic"); }
Bytes avif() { return madeBy({"avifenc", "-s", "9", "-j", "1", "IN", "OUT"}, "avif"); }

/// All properties of that kind: one of them may be nobody's.
Bytes claiming(Bytes file, std::size_t side) {
  const Bytes claimed = sides(side, side);
  for (std::size_t at = 0; at + 16 <= file.size(); ++at) {
    if (std::equal(file.begin() + static_cast<std::ptrdiff_t>(at),
                   file.begin() + static_cast<std::ptrdiff_t>(at + 4), "ispe"))
      std::copy(claimed.begin(), claimed.end(), file.begin() + static_cast<std::ptrdiff_t>(at + 8));
  }
  return file;
}

// OpenEXR

Bytes exr(unsigned tile = 0) {
  ExrParts parts = exrParts(16, 16, {{"G", [](int, int) { return 0.5F; }}});
  parts.tile = tile;
  return exrFile(parts);
}

/// Windows from the origin to the corner.
Bytes withExrWindows(Bytes file, std::uint32_t x, std::uint32_t y) {
  const TiffBuilder little;
  const Bytes corner = joined({little.number(x, 4), little.number(y, 4)});
  file = withBytesAt(std::move(file), "dataWindow\0box2i"sv, 17 + 4 + 8, corner);
  return withBytesAt(std::move(file), "displayWindow\0box2i"sv, 20 + 4 + 8, corner);
}

// Raw pictures

Bytes dng(std::uint32_t width, std::uint32_t height, bool isCompressed = false) {
  DngParts parts;
  parts.isCompressed = isCompressed;
  parts.moreRaw = [&](TiffParts& raw) {
    std::erase_if(raw.entries,
                  [](const TiffParts::Entry& entry) { return entry.tag == 256 || entry.tag == 257; });
    raw.longs(256, {width});
    raw.longs(257, {height});
  };
  return dngFile(parts);
}

/// The frame of the packed pixels claims what the directory does, too.
Bytes dngOfAGiantFrame() {
  return withBytesAt(dng(65535, 65535, true), "\xFF\xC3\0\x0B\x10"sv, 5, kFourGiga);
}

}  // namespace

std::vector<Bomb> tiffBombs() {
  return {
      {"TiffOfTwoToThe32Sides", "tif", [] { return tiffFileOf(tiff(0xFFFFFFFF, 1, Bytes(100))); }},
      {"TiffOfNineHundredMegapixels", "tif", [] { return tiffFileOf(tiff(30000, 8, deflatedZeros(100))); }},
      {"TiffOfNineHundredMegapixelsInCodes", "tif", [] { return tiffFileOf(tiff(30000, 5, emptyLzw(100))); }},
      {"TiffWhoseStripGoesOnForHundredsOfMegabytes", "tif",
       [] { return tiffFileOf(tiff(16, 8, deflatedZeros(300 * kMega))); }},
      {"TiffWhoseCodesBeginAgainAndAgain", "tif",
       [] { return tiffFileOf(tiff(16, 5, emptyLzw(8 * kMega))); }},
      {"TiffOfAnEndlessChain", "tif",
       [] {
         const TiffBuilder builder;
         const TiffBuilder::Directory page = builder.picture(16, 16, 8, 1, 1, Bytes(256));
         return builder.build({page, page}, 0);
       }},
      {"TiffOfAHundredThousandPages", "tif",
       [] {
         const TiffBuilder builder;
         return builder.build(std::vector(100'000, builder.picture(1, 1, 8, 1, 1, Bytes(1))));
       }},
      {"TiffOfTwoToThe32Entries", "tif", [] { return bigTiffOfSoManyEntries(std::uint64_t{1} << 32); }},
      {"TiffOfTwoToThe32Strips", "tif",
       [] { return withGiantCount(tiffFileOf(tiff(16, 1, Bytes(256))), 273); }, "16x16"},
      {"TiffOfTwoToThe32Samples", "tif",
       [] { return withGiantCount(tiffFileOf(tiff(16, 1, Bytes(256))), 258); }},
  };
}

std::vector<Bomb> modernBombs() {
  return {
      {"Jp2OfTwoToThe31Sides", "jp2", [] { return jp2(sides(0x7FFFFFFF, 0x7FFFFFFF), {}); }},
      {"Jp2OfNineHundredMegapixels", "jp2", [] { return jp2(sides(30000, 30000), sides(30000, 30000)); }},
      {"Jp2Of65000Tiles", "jp2", [] { return jp2(sides(255, 255), sides(1, 1)); }},
      {"Jp2OfSixtyMegapixelsInOneTile", "jp2", [] { return jp2(sides(8000, 8000), sides(8000, 8000)); }},
      {"JxlOfTwoToThe30Sides", "jxl", [] { return jxl(1 << 30, 1 << 30); }},
      {"JxlOfNineHundredMegapixels", "jxl", [] { return jxl(30000, 30000); }},
      {"JxlOfSixtyMegapixels", "jxl", [] { return jxl(8000, 8000); }},
      {"WebpOf16384Sides", "webp", [] { return flatWebp(16384); }},
      {"WebpOfTwelveMegapixels", "webp", [] { return flatWebp(3500); }, "3500x3500"},
      {"WebpOnACanvasOfTwoToThe24Sides", "webp", [] { return webpCanvas(Bytes(6, 0xFF)); }},
      {"WebpOnACanvasOf16384Sides", "webp",
       [] {
         return webpCanvas({0xFF, 0x3F, 0, 0xFF, 0x3F, 0});
       }},
  };
}

std::vector<Bomb> heifBombs() {
  return {
      {"HeicOfTwoToThe32Sides", "heic", [] { return claiming(heic(), 0xFFFFFFFF); }},
      {"HeicOfSixtyMegapixels", "heic", [] { return claiming(heic(), 8000); }},
      {"HeicOfManyItems", "heic",
       [] {
         return withBytesAt(heic(), "iinf", 8, {0xFF, 0xFF});
       },
       "47x33"},
      {"HeicWithoutItsSettings", "heic", [] { return withBytesAt(heic(), "hvcC", 0, bytesOfText("free")); }},
      {"AvifOfTwoToThe32Sides", "avif", [] { return claiming(avif(), 0xFFFFFFFF); }},
      {"AvifOfSixtyMegapixels", "avif", [] { return claiming(avif(), 8000); }},
      {"AvifOfManyItems", "avif",
       [] {
         return withBytesAt(avif(), "iinf", 8, {0xFF, 0xFF});
       }},
  };
}

std::vector<Bomb> lightBombs() {
  return {
      {"ExrOfTwoToThe31Sides", "exr", [] { return withExrWindows(exr(), 0x7FFFFFFE, 0x7FFFFFFE); }},
      {"ExrOfNineHundredMegapixels", "exr", [] { return withExrWindows(exr(), 29999, 29999); }},
      {"ExrOfAHundredMillionLines", "exr", [] { return withExrWindows(exr(), 0, 100'000'000); }},
      {"ExrOfMillionsOfTiles", "exr", [] { return withExrWindows(exr(1), 7999, 7999); }},
      {"DngOfTwoToThe31Sides", "dng", [] { return dng(0x7FFFFFFF, 0x7FFFFFFF); }},
      {"DngOf65535Sides", "dng", [] { return dng(65535, 65535); }},
      {"DngOf65535SidesInAPackedFrame", "dng", dngOfAGiantFrame},
      {"DngOfTwelveMegapixelsInOneRow", "dng", [] { return dng(12'000'000, 1); }},
      {"DngOfTwelveMegapixels", "dng", [] { return dng(4000, 3000); }},
  };
}

}  // namespace ostra::test
