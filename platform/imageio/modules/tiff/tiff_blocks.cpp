#include "platform/imageio/modules/tiff/tiff_blocks.h"

#include <algorithm>

#include "platform/imageio/modules/tiff/tiff_deflate.h"

namespace ostra {
namespace {

std::uint32_t rowsOfBands(const TiffFile& file, const TiffDirectory& directory) {
  if (directory.tiled) return file.field<std::uint32_t>(TIFFTAG_TILELENGTH);
  return std::min(file.field<std::uint32_t>(TIFFTAG_ROWSPERSTRIP, directory.height), directory.height);
}

bool isWhole(tmsize_t read, const Bytes& bytes) { return read == static_cast<tmsize_t>(bytes.size()); }

}  // namespace

TiffBands::TiffBands(const TiffFile& file, const TiffDirectory& directory)
    : file_(file),
      directory_(directory),
      rowsPerBand_(rowsOfBands(file, directory)),
      rowsPerStrip_(rowsPerBand_) {
  const std::uint16_t planes = directory.separatePlanes ? directory.samples : 1;
  const std::uint32_t width =
      directory.tiled ? file.field<std::uint32_t>(TIFFTAG_TILEWIDTH) : directory.width;
  const tmsize_t bytesPerRow = directory.tiled ? TIFFTileRowSize(file.get()) : TIFFScanlineSize(file.get());
  if (width == 0 || bytesPerRow <= 0) rowsPerBand_ = 0;
  if (rowsPerBand_ == 0) return;
  constexpr std::uint64_t kLargeStrip = 16u << 20;
  byRows_ =
      !directory.tiled && planes == 1 && static_cast<std::uint64_t>(bytesPerRow) * rowsPerBand_ > kLargeStrip;
  if (byRows_) rowsPerBand_ = 1;
  for (std::uint16_t plane = 0; plane < planes; ++plane) {
    for (std::uint64_t x = 0; x < directory.width; x += width) {
      TiffBlock block;
      block.x = static_cast<std::uint32_t>(x);
      block.width = width;
      block.firstSample = plane;
      block.samples = directory.separatePlanes ? std::uint16_t{1} : directory.samples;
      block.bytesPerRow = static_cast<std::size_t>(bytesPerRow);
      blocks_.push_back(std::move(block));
    }
  }
}

std::uint64_t TiffBands::bytes() const {
  std::uint64_t sum = 0;
  for (const TiffBlock& block : blocks_)
    sum += checkedProduct(block.bytesPerRow, rowsPerBand_).value_or(UINT64_MAX / 2);
  return sum;
}

std::optional<std::uint32_t> TiffBands::next() {
  if (rowsPerBand_ == 0 || blocks_.empty()) return std::nullopt;
  if (y_ >= directory_.height) return 0;
  const std::uint32_t rows = std::min(rowsPerBand_, directory_.height - y_);
  if (!(byRows_ ? readRow() : directory_.tiled ? readTiles() : readStrips(rows))) return std::nullopt;
  y_ += rows;
  return rows;
}

/// Of a strip or tile that can be judged before the library unpacks it.
bool TiffBands::isSound(std::uint32_t number, std::uint64_t size) const {
  const bool isDeflate =
      directory_.compression == COMPRESSION_ADOBE_DEFLATE || directory_.compression == COMPRESSION_DEFLATE;
  const bool isReversed =
      file_.field<std::uint16_t>(TIFFTAG_FILLORDER, FILLORDER_MSB2LSB) == FILLORDER_LSB2MSB;
  if (!isDeflate || isReversed) return true;
  const std::uint64_t offset = TIFFGetStrileOffset(file_.get(), number),
                      length = TIFFGetStrileByteCount(file_.get(), number), end = file_.bytes().size();
  return offset <= end && length <= end - offset &&
         isSoundDeflate(file_.bytes().subspan(offset, length), size);
}

bool TiffBands::readRow() {
  TiffBlock& block = blocks_.front();
  const std::uint32_t rows = std::min(rowsPerStrip_, directory_.height - y_);
  if (y_ % rowsPerStrip_ == 0 &&
      !isSound(TIFFComputeStrip(file_.get(), y_, 0), std::uint64_t{block.bytesPerRow} * rows))
    return false;
  block.bytes.resize(block.bytesPerRow);
  return TIFFReadScanline(file_.get(), block.bytes.data(), y_, 0) == 1;
}

bool TiffBands::readStrips(std::uint32_t rows) {
  for (TiffBlock& block : blocks_) {
    const std::uint32_t strip = TIFFComputeStrip(file_.get(), y_, block.firstSample);
    block.bytes.resize(block.bytesPerRow * rows);
    if (!isSound(strip, block.bytes.size())) return false;
    const tmsize_t read = TIFFReadEncodedStrip(file_.get(), strip, block.bytes.data(),
                                               static_cast<tmsize_t>(block.bytes.size()));
    if (!isWhole(read, block.bytes)) return false;
  }
  return true;
}

bool TiffBands::readTiles() {
  for (TiffBlock& block : blocks_) {
    const std::uint32_t tile = TIFFComputeTile(file_.get(), block.x, y_, 0, block.firstSample);
    block.bytes.resize(block.bytesPerRow * rowsPerBand_);
    if (!isSound(tile, block.bytes.size())) return false;
    const tmsize_t read =
        TIFFReadEncodedTile(file_.get(), tile, block.bytes.data(), static_cast<tmsize_t>(block.bytes.size()));
    if (!isWhole(read, block.bytes)) return false;
  }
  return true;
}

}  // namespace ostra
