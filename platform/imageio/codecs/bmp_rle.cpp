#include "platform/imageio/codecs/bmp_rle.h"

#include <algorithm>

namespace ostra {

namespace {

// Rows that are not coded are padded to whole double words.
std::size_t paddedWidth(const BmpHeader& header) {
  const std::size_t width = header.width;
  if (header.packing == BmpPacking::rle24) return width;
  const std::size_t step = header.packing == BmpPacking::rle4 ? 8 : 4;
  return (width + step - 1) / step * step;
}

}  // namespace

BmpRleRows::BmpRleRows(ByteView data, const BmpHeader& header)
    : data_(data),
      packing_(header.packing),
      width_(header.width),
      room_(paddedWidth(header)),
      pixelBytes_(header.packing == BmpPacking::rle24 ? 3 : 1),
      rowsLeft_(header.height) {}

bool BmpRleRows::next(std::uint8_t* row) {
  std::fill_n(row, rowBytes(), std::uint8_t{0});
  --rowsLeft_;
  if (rowsToSkip_ > 0) {
    --rowsToSkip_;
    return true;
  }
  while (!ended_) {
    // Some programs leave out the marks behind the last pixel.
    if (!has(2)) return rowsLeft_ == 0 && column_ >= width_;
    const std::size_t count = data_[at_];
    if (count > 0) {
      ++at_;
      if (!readRun(row, count)) return false;
      continue;
    }
    const std::size_t mark = data_[at_ + 1];
    at_ += 2;
    if (mark == 0) {
      column_ = 0;
      return true;
    }
    if (mark == 1) ended_ = true;
    if (mark == 2) {
      if (!skip()) return false;
      if (rowsToSkip_ > 0) {
        --rowsToSkip_;
        return true;
      }
    }
    if (mark > 2 && !readPixels(row, mark)) return false;
  }
  return true;
}

// Four bits: the two halves of one byte in turn.
bool BmpRleRows::readRun(std::uint8_t* row, std::size_t count) {
  if (!has(pixelBytes_) || count > room_ - column_) return false;
  const std::uint8_t* value = &data_[at_];
  at_ += pixelBytes_;
  std::uint8_t* to = row + column_ * pixelBytes_;
  column_ += count;
  if (packing_ == BmpPacking::rle8) {
    std::fill_n(to, count, *value);
  } else if (packing_ == BmpPacking::rle24) {
    for (std::size_t i = 0; i < count; ++i) to = std::copy_n(value, 3, to);
  } else {
    for (std::size_t i = 0; i < count; ++i)
      to[i] = static_cast<std::uint8_t>(i % 2 == 0 ? *value >> 4 : *value & 15);
  }
  return true;
}

// Padded to an even number of bytes, less where the file ends.
bool BmpRleRows::readPixels(std::uint8_t* row, std::size_t count) {
  const std::size_t size = packing_ == BmpPacking::rle4 ? (count + 1) / 2 : count * pixelBytes_;
  if (!has(size) || count > room_ - column_) return false;
  const std::uint8_t* from = &data_[at_];
  std::uint8_t* to = row + column_ * pixelBytes_;
  if (packing_ == BmpPacking::rle4) {
    for (std::size_t i = 0; i < count; ++i)
      to[i] = static_cast<std::uint8_t>(i % 2 == 0 ? from[i / 2] >> 4 : from[i / 2] & 15);
  } else {
    std::copy_n(from, size, to);
  }
  column_ += count;
  at_ = std::min(at_ + size + size % 2, data_.size());
  return true;
}

bool BmpRleRows::skip() {
  if (!has(2)) return false;
  const std::size_t columns = data_[at_], rows = data_[at_ + 1];
  at_ += 2;
  if (columns > room_ - column_ || rows > rowsLeft_) return false;
  column_ += columns;
  rowsToSkip_ = rows;
  return true;
}

}  // namespace ostra
