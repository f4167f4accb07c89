#pragma once
#include <array>
#include <cstdint>

#include "platform/imageio/codecs/gif_blocks.h"

namespace ostra {

/// The pixels that the first frame is drawn on, four bytes each, in the order in which the frame stores them.
class GifCanvas {
 public:
  /// `pixels` are zeroed and as many as the structure's canvas has.
  GifCanvas(const GifStructure& structure, std::uint8_t* pixels);

  /// Draws the next pixel; false when there is none left, or no such entry in the palette.
  bool put(std::uint8_t entry) {
    if (isFull() || !known_[entry]) return false;
    draw(entry);
    if (++x_ == frame_.width) beginNextRow();
    return true;
  }
  bool isFull() const { return rowsLeft_ == 0; }
  std::uint32_t rowsLeft() const { return rowsLeft_; }

 private:
  void draw(std::uint8_t entry) {
    std::uint8_t* pixel = row_ + std::size_t{4} * x_;
    for (std::size_t i = 0; i < 4; ++i) pixel[i] = colours_[entry][i];
  }
  void beginNextRow();
  void findRow();

  const GifFrame frame_;
  std::uint8_t* const origin_;
  const std::size_t bytesPerRow_;
  std::uint8_t* row_ = nullptr;
  std::uint32_t x_ = 0, y_ = 0;
  unsigned pass_ = 0;
  std::uint32_t rowsLeft_;
  std::array<std::array<std::uint8_t, 4>, 256> colours_{};
  std::array<bool, 256> known_{};
};

}  // namespace ostra
