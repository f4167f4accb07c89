#include "platform/imageio/codecs/plain_rows.h"

#include <algorithm>

namespace ostra {

PlainRows::PlainRows(const Pixels& pixels, unsigned bits)
    : layout_(pixels.layout),
      straight_(pixels),
      bits_(bits),
      colours_(layout_.model == CGColorSpaceModel::monochrome ? 1 : 3),
      alpha_(straight_.alpha() == CGImageAlphaInfo::last),
      buffer_(std::size_t{layout_.width} * samples() * (bits / 8)) {}

const std::uint8_t* PlainRows::row(std::uint32_t y) {
  const std::uint8_t* from = straight_.row(y);
  const std::size_t stored = layout_.bitsPerPixel / 8u, sample = layout_.bitsPerComponent / 8u;
  const bool reduces = bits_ == 8 && layout_.bitsPerComponent == 16;
  std::uint8_t* to = buffer_.data();
  for (std::size_t x = 0; x < layout_.width; ++x, from += stored) {
    if (!reduces) {
      to = std::copy_n(from, samples() * sample, to);
      continue;
    }
    for (std::size_t c = 0; c < samples(); ++c) {
      const unsigned word = from[2 * c] | static_cast<unsigned>(from[2 * c + 1]) << 8;
      *to++ = static_cast<std::uint8_t>((word + 128) / 257);
    }
  }
  return buffer_.data();
}

void PlainRows::storeBlueFirst(std::uint32_t y, std::uint8_t* to) {
  const std::uint8_t* from = row(y);
  const std::size_t width = layout_.width, blue = colours_ - 1;
  if (samples() == 1) {
    std::copy_n(from, width, to);
    return;
  }
  for (std::size_t x = 0; x < width; ++x, from += samples()) {
    *to++ = from[blue];
    *to++ = from[blue / 2];
    *to++ = from[0];
    if (alpha_) *to++ = from[colours_];
  }
}

}  // namespace ostra
