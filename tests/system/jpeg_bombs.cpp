#include <algorithm>

#include "tests/platform/imageio/picture_files.h"
#include "tests/system/bombs.h"

namespace ostra::test {
namespace {

const std::string kSize = std::to_string(kWidth) + "x" + std::to_string(kHeight);

Bytes smallPicture() {
  return encoded("public.jpeg", pixelsOf(softSamples(kWidth, kHeight, 3, 8), kWidth, kHeight,
                                         CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::none));
}

Bytes repeated(const Bytes& part, std::size_t times) {
  Bytes all;
  all.reserve(part.size() * times);
  for (std::size_t i = 0; i < times; ++i) all.insert(all.end(), part.begin(), part.end());
  return all;
}

std::size_t after(std::uint8_t marker, const Bytes& file) {
  const std::string name = {static_cast<char>(0xFF), static_cast<char>(marker)};
  return positionOf(name, file) + 2;
}

/// The small picture with other numbers in its frame header.
Bytes ofSize(std::uint16_t width, std::uint16_t height) {
  Bytes file = smallPicture();
  const std::size_t frame = after(0xC0, file);
  file[frame + 3] = static_cast<std::uint8_t>(height >> 8),
               file[frame + 4] = static_cast<std::uint8_t>(height);
  file[frame + 5] = static_cast<std::uint8_t>(width >> 8), file[frame + 6] = static_cast<std::uint8_t>(width);
  return file;
}

/// The segment of a marker in the small picture.
Bytes ownSegment(std::uint8_t marker) {
  const Bytes file = smallPicture();
  const std::size_t begin = after(marker, file) - 2;
  const std::size_t size = 2u + (file[begin + 2] << 8 | file[begin + 3]);
  const auto first = file.begin() + static_cast<std::ptrdiff_t>(begin);
  return Bytes(first, first + static_cast<std::ptrdiff_t>(size));
}

Bytes withInScan(const Bytes& part) {
  Bytes file = smallPicture();
  const std::size_t scan = after(0xDA, file);
  const std::size_t data = scan + (file[scan] << 8 | file[scan + 1]) + 20;
  file.insert(file.begin() + static_cast<std::ptrdiff_t>(data), part.begin(), part.end());
  return file;
}

constexpr std::uint16_t kProgressiveSide = 512;

/// Of a gray progressive file whose Huffman tables hold one code, "0": no difference, no further coefficient.
Bytes blackScan(int first, int last, int high, int low) {
  const Bytes numbers = {1,
                         1,
                         0,
                         static_cast<std::uint8_t>(first),
                         static_cast<std::uint8_t>(last),
                         static_cast<std::uint8_t>(high << 4 | low)};
  return joined({jpegSegment(0xDA, "", numbers), Bytes(kProgressiveSide / 8 * kProgressiveSide / 8 / 8)});
}

/// Well-formed: each coefficient comes alone, and bit by bit.
Bytes progressiveFile(int coefficients) {
  Bytes table(18);
  table[1] = 1;  // one code of one bit, for the symbol 0
  Bytes blocks = table;
  blocks[0] = 0x10;
  Bytes file = joined({Bytes{0xFF, 0xD8}, jpegSegment(0xDB, "", joined({Bytes{0}, Bytes(64, 1)})),
                       jpegSegment(0xC2, "", Bytes{8, 2, 0, 2, 0, 1, 1, 0x11, 0}),
                       jpegSegment(0xC4, "", table), jpegSegment(0xC4, "", blocks), blackScan(0, 0, 0, 0)});
  for (int k = 1; k <= coefficients; ++k) {
    for (int low = 13; low >= 0; --low) {
      const Bytes scan = blackScan(k, k, low == 13 ? 0 : low + 1, low);
      file.insert(file.end(), scan.begin(), scan.end());
    }
  }
  file.insert(file.end(), {0xFF, 0xD9});
  return file;
}

}  // namespace

std::vector<Bomb> jpegBombs() {
  return {
      {"JpegOfFourThousandMegapixels", "jpg", [] { return ofSize(65500, 65500); }},
      {"JpegOfFourHundredMegapixelsInAFewBytes", "jpg", [] { return ofSize(20000, 20000); }},
      {"JpegProgressiveOfNineHundredMegapixels", "jpg",
       [] {
         Bytes file = ofSize(65500, 15000);
         file[after(0xC0, file) - 1] = 0xC2;
         return file;
       }},
      {"JpegOfHundredsOfScans", "jpg", [] { return progressiveFile(63); }},
      {"JpegOfScansThatMayBe", "jpg", [] { return progressiveFile(2); }, "512x512"},
      {"JpegOfTenThousandEqualScans", "jpg",
       [] {
         Bytes file = progressiveFile(1);
         file.resize(file.size() - 2);
         return joined({file, repeated(blackScan(1, 63, 0, 0), 10'000), Bytes{0xFF, 0xD9}});
       }},
      {"JpegWithAHundredThousandHuffmanTables", "jpg",
       [] { return withJpegSegment(smallPicture(), repeated(ownSegment(0xC4), 20'000)); }, kSize},
      {"JpegWithAHundredThousandQuantizationTables", "jpg",
       [] { return withJpegSegment(smallPicture(), repeated(ownSegment(0xDB), 100'000)); }, kSize},
      {"JpegWithAMillionRestartMarkersBeforeItsScan", "jpg",
       [] {
         return withJpegSegment(smallPicture(), repeated(Bytes{0xFF, 0xD0}, 1'000'000));
       },
       kSize},
      {"JpegWithAMillionRestartMarkersInItsScan", "jpg",
       [] {
         return withInScan(repeated(Bytes{0xFF, 0xD0, 0xFF, 0xD3}, 500'000));
       }},
      {"JpegThatRestartsAtEachBlockAndDoesNot", "jpg",
       [] {
         return withJpegSegment(smallPicture(), jpegSegment(0xDD, "", Bytes{0, 1}));
       }},
      {"JpegWithAHundredThousandPrivateSegments", "jpg",
       [] { return withJpegSegment(smallPicture(), repeated(jpegSegment(0xEB, "private", {}), 100'000)); },
       kSize},
      {"JpegWithAHundredThousandComments", "jpg",
       [] { return withJpegSegment(smallPicture(), repeated(jpegSegment(0xFE, "a", {}), 100'000)); }, kSize},
      {"JpegWithMegabytesBetweenItsSegments", "jpg",
       [] { return withJpegSegment(smallPicture(), Bytes(64u << 20)); }},
  };
}

}  // namespace ostra::test
