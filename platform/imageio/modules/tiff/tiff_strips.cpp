#include "platform/imageio/modules/tiff/tiff_strips.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>

#include <tiffio.h>

#include "platform/imageio/codecs/inflate.h"
#include "platform/imageio/modules/tiff/tiff_sink.h"
#include "platform/imageio/straight_rows.h"

namespace ostra {
namespace {

constexpr std::uint32_t kStripBytes = 256 << 10;

/// The rows without samples that are skipped.
class PackedRows {
 public:
  PackedRows(const Pixels& pixels, std::uint16_t samples)
      : rows_(pixels),
        width_(pixels.layout.width),
        stored_(pixels.layout.bitsPerPixel / 8u),
        packed_(std::size_t{samples} * (pixels.layout.bitsPerComponent / 8u)) {}

  std::size_t size() const { return width_ * packed_; }
  void copy(std::uint32_t y, std::uint8_t* to) {
    const std::uint8_t* from = rows_.row(y);
    if (stored_ == packed_) {
      std::memcpy(to, from, size());
      return;
    }
    for (std::size_t x = 0; x < width_; ++x, from += stored_, to += packed_) std::memcpy(to, from, packed_);
  }

 private:
  StraightRows rows_;
  std::size_t width_, stored_, packed_;
};

bool takesDifferences(std::uint16_t compression) {
  return compression == COMPRESSION_LZW || compression == COMPRESSION_ADOBE_DEFLATE ||
         compression == COMPRESSION_DEFLATE || compression == COMPRESSION_LZMA ||
         compression == COMPRESSION_ZSTD;
}

std::uint16_t writtenCompression(std::uint16_t asked) {
  constexpr std::array<std::uint16_t, 7> kWritten = {
      COMPRESSION_NONE,     COMPRESSION_LZW,  COMPRESSION_ADOBE_DEFLATE, COMPRESSION_DEFLATE,
      COMPRESSION_PACKBITS, COMPRESSION_LZMA, COMPRESSION_ZSTD};
  const bool known = std::find(kWritten.begin(), kWritten.end(), asked) != kWritten.end();
  return known && TIFFIsCODECConfigured(asked) != 0 ? asked : std::uint16_t{COMPRESSION_ADOBE_DEFLATE};
}

template <class Word>
void subtractNeighbours(Bytes& row, std::size_t samples) {
  for (std::size_t i = row.size() / sizeof(Word) - 1; i >= samples; --i) {
    Word value, neighbour;
    std::memcpy(&value, row.data() + i * sizeof(Word), sizeof(Word));
    std::memcpy(&neighbour, row.data() + (i - samples) * sizeof(Word), sizeof(Word));
    value = static_cast<Word>(value - neighbour);
    std::memcpy(row.data() + i * sizeof(Word), &value, sizeof(Word));
  }
}

/// Tries both on some rows from all over the picture.
bool differencesHelp(const Pixels& pixels, const TiffPacking& packing) {
  constexpr std::size_t kTried = 256 << 10;
  constexpr std::uint32_t kTogether = 8;
  const Layout& layout = pixels.layout;
  PackedRows rows(pixels, packing.samples());
  const auto blocks = static_cast<std::uint32_t>(std::max<std::size_t>(kTried / rows.size() / kTogether, 1));
  const std::uint32_t step = std::max(layout.height / blocks, kTogether);
  Bytes row(rows.size()), plain, different;
  for (std::uint32_t y = 0; y < layout.height; ++y) {
    if (y % step >= kTogether) continue;
    rows.copy(y, row.data());
    plain.insert(plain.end(), row.begin(), row.end());
    layout.bitsPerComponent == 8 ? subtractNeighbours<std::uint8_t>(row, packing.samples())
                                 : subtractNeighbours<std::uint16_t>(row, packing.samples());
    different.insert(different.end(), row.begin(), row.end());
  }
  return deflateAll(different).size() < deflateAll(plain).size();
}

struct CloseTiff {
  TiffSink* sink;
  void operator()(TIFF* tiff) const {
    sink->close();
    TIFFClose(tiff);
  }
};

/// Measured on photographs: more costs times of that for some hundredths of the size.
void setEffort(TIFF* tiff, std::uint16_t compression) {
  if (compression == COMPRESSION_ADOBE_DEFLATE || compression == COMPRESSION_DEFLATE)
    TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, 4);
  if (compression == COMPRESSION_LZMA) TIFFSetField(tiff, TIFFTAG_LZMAPRESET, 1);
  if (compression == COMPRESSION_ZSTD) TIFFSetField(tiff, TIFFTAG_ZSTD_LEVEL, 3);
}

void setFields(TIFF* tiff, const Layout& layout, const TiffPacking& packing) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, layout.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, layout.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, layout.bitsPerComponent);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, packing.samples());
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, packing.photometry);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, packing.rowsPerStrip);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, packing.compression);
  if (packing.predictor != PREDICTOR_NONE) TIFFSetField(tiff, TIFFTAG_PREDICTOR, packing.predictor);
  setEffort(tiff, packing.compression);
}

}  // namespace

TiffPacking tiffPacking(const Pixels& pixels, std::uint16_t asked) {
  const Layout& layout = pixels.layout;
  TiffPacking packing;
  packing.hasAlpha = StraightRows(pixels).alpha() == CGImageAlphaInfo::last;
  if (layout.model == CGColorSpaceModel::rgb) {
    packing.photometry = PHOTOMETRIC_RGB;
    packing.colours = 3;
  } else if (layout.model == CGColorSpaceModel::cmyk) {
    packing.photometry = PHOTOMETRIC_SEPARATED;
    packing.colours = 4;
  }
  const std::uint64_t row = std::uint64_t{layout.width} * packing.samples() * (layout.bitsPerComponent / 8u);
  packing.rowsPerStrip =
      static_cast<std::uint32_t>(std::clamp<std::uint64_t>(kStripBytes / row, 1, layout.height));
  packing.compression = writtenCompression(asked);
  if (takesDifferences(packing.compression) && differencesHelp(pixels, packing))
    packing.predictor = PREDICTOR_HORIZONTAL;
  return packing;
}

std::optional<TiffStrips> appendTiffStrips(Bytes& file, const Pixels& pixels, const TiffPacking& packing,
                                           bool bigEndian) {
  const Layout& layout = pixels.layout;
  TiffSink sink(file);
  const std::unique_ptr<TIFF, CloseTiff> tiff(sink.open(bigEndian ? 'b' : 'l'), CloseTiff{&sink});
  if (tiff == nullptr) return std::nullopt;
  setFields(tiff.get(), layout, packing);
  PackedRows rows(pixels, packing.samples());
  TiffStrips strips;
  Bytes strip;
  for (std::uint32_t y = 0, number = 0; y < layout.height; y += packing.rowsPerStrip, ++number) {
    const std::uint32_t count = std::min(packing.rowsPerStrip, layout.height - y);
    strip.resize(rows.size() * count);
    for (std::uint32_t i = 0; i < count; ++i) rows.copy(y + i, strip.data() + i * rows.size());
    const auto size = static_cast<tmsize_t>(strip.size());
    const bool done = TIFFWriteEncodedStrip(tiff.get(), number, strip.data(), size) == size;
    if (sink.lacksMemory()) throw std::bad_alloc();
    if (!done) return std::nullopt;
    strips.offsets.push_back(TIFFGetStrileOffset(tiff.get(), number));
    strips.sizes.push_back(TIFFGetStrileByteCount(tiff.get(), number));
  }
  return strips;
}

}  // namespace ostra
