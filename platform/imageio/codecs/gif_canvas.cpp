#include "platform/imageio/codecs/gif_canvas.h"

namespace ostra {
namespace {

// The four passes over the rows of an interlaced frame.
constexpr std::array<std::uint32_t, 4> kFirstRow = {0, 4, 2, 1}, kStep = {8, 8, 4, 2};

}  // namespace

GifCanvas::GifCanvas(const GifStructure& structure, std::uint8_t* pixels)
    : frame_(structure.first),
      origin_(pixels + std::size_t{4} * (std::size_t{frame_.top} * structure.width + frame_.left)),
      bytesPerRow_(std::size_t{4} * structure.width),
      rowsLeft_(frame_.height) {
  const ByteView palette = structure.palette();
  for (std::size_t entry = 0; entry < palette.size() / 3; ++entry) {
    known_[entry] = true;
    colours_[entry] = {palette[3 * entry], palette[3 * entry + 1], palette[3 * entry + 2], 255};
  }
  // A transparent entry needs no place in the palette; what colour it would have had is nobody's business.
  if (structure.transparent) {
    known_[*structure.transparent] = true;
    colours_[*structure.transparent] = {};
  }
  findRow();
}

void GifCanvas::findRow() { row_ = origin_ + y_ * bytesPerRow_; }

void GifCanvas::beginNextRow() {
  x_ = 0;
  if (--rowsLeft_ == 0) return;
  if (!frame_.interlaced) {
    ++y_;
  } else {
    y_ += kStep[pass_];
    // Low pictures have passes without a row.
    while (y_ >= frame_.height) y_ = kFirstRow[++pass_];
  }
  findRow();
}

}  // namespace ostra
