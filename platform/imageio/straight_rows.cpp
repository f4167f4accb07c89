#include "platform/imageio/straight_rows.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

namespace ostra {
namespace {

CGImageAlphaInfo infoOf(const Layout& layout) {
  return static_cast<CGImageAlphaInfo>(layout.bitmapInfo & kCGBitmapAlphaInfoMask);
}

CGImageAlphaInfo writtenAlpha(CGImageAlphaInfo info) {
  switch (info) {
    case CGImageAlphaInfo::none:
      return CGImageAlphaInfo::none;
    case CGImageAlphaInfo::noneSkipLast:
    case CGImageAlphaInfo::noneSkipFirst:
      return CGImageAlphaInfo::noneSkipLast;
    default:
      return CGImageAlphaInfo::last;
  }
}

// Colour divided by alpha, for every pair of 8-bit values: a division a sample would be the slowest part of
// writing.
const std::array<std::array<std::uint8_t, 256>, 256>& straightColours() {
  static const auto table = [] {
    auto values = std::make_unique<std::array<std::array<std::uint8_t, 256>, 256>>();
    for (unsigned alpha = 1; alpha < 256; ++alpha) {
      for (unsigned colour = 0; colour < 256; ++colour)
        (*values)[alpha][colour] =
            static_cast<std::uint8_t>(std::min(255u, (colour * 255 + alpha / 2) / alpha));
    }
    (*values)[0].fill(0);
    return *values;
  }();
  return table;
}

std::uint8_t straight(std::uint8_t colour, std::uint8_t alpha) { return straightColours()[alpha][colour]; }
std::uint16_t straight(std::uint16_t colour, std::uint16_t alpha) {
  if (alpha == 0) return 0;
  const std::uint32_t value = (std::uint32_t{colour} * 65535u + alpha / 2u) / alpha;
  return static_cast<std::uint16_t>(std::min<std::uint32_t>(value, 65535));
}

template <class Sample>
void arrangeRow(const std::uint8_t* from, std::uint8_t* to, std::size_t pixels, std::size_t colours,
                bool premultiplied, bool first) {
  Sample in[5];
  Sample out[5];
  const std::size_t size = (colours + 1) * sizeof(Sample);
  for (std::size_t x = 0; x < pixels; ++x, from += size, to += size) {
    std::memcpy(in, from, size);
    const Sample* colour = first ? in + 1 : in;
    const Sample alpha = first ? in[0] : in[colours];
    for (std::size_t c = 0; c < colours; ++c) out[c] = premultiplied ? straight(colour[c], alpha) : colour[c];
    out[colours] = alpha;
    std::memcpy(to, out, size);
  }
}

}  // namespace

StraightRows::StraightRows(const Pixels& pixels) : pixels_(pixels) {
  const Layout& layout = pixels.layout;
  const CGImageAlphaInfo info = infoOf(layout);
  alpha_ = writtenAlpha(info);
  first_ = info == CGImageAlphaInfo::premultipliedFirst || info == CGImageAlphaInfo::first ||
           info == CGImageAlphaInfo::noneSkipFirst;
  premultiplied_ =
      info == CGImageAlphaInfo::premultipliedLast || info == CGImageAlphaInfo::premultipliedFirst;
  if (first_ || premultiplied_) buffer_.resize(std::size_t{layout.width} * (layout.bitsPerPixel / 8u));
  // Made here, where there may not be the memory for it: rows are asked for in frames that are jumped
  // through.
  if (premultiplied_) straightColours();
}

const std::uint8_t* StraightRows::row(std::uint32_t y) {
  const Layout& layout = pixels_.layout;
  const std::uint8_t* from = pixels_.bytes.view.data() + y * layout.bytesPerRow;
  if (buffer_.empty()) return from;
  const std::size_t colours = layout.bitsPerPixel / layout.bitsPerComponent - 1u;
  const auto arrange = layout.bitsPerComponent == 8 ? arrangeRow<std::uint8_t> : arrangeRow<std::uint16_t>;
  arrange(from, buffer_.data(), layout.width, colours, premultiplied_, first_);
  return buffer_.data();
}

}  // namespace ostra
