#include "platform/imageio/codecs/hdr_scanlines.h"

#include <algorithm>

namespace ostra {

// The newer way: each channel for itself, in runs.
bool HdrScanlines::readChannels(std::span<HdrPixel> scanline) {
  for (std::size_t channel = 0; channel < 4; ++channel) {
    std::size_t x = 0;
    while (x < scanline.size()) {
      if (rest_.size() < 2) return false;
      const bool repeats = rest_[0] > 128;
      const std::size_t count = repeats ? rest_[0] - 128u : rest_[0], stored = repeats ? 1 : count;
      if (count == 0 || count > scanline.size() - x || stored >= rest_.size()) return false;
      for (std::size_t i = 0; i < count; ++i) scanline[x++][channel] = rest_[1 + (repeats ? 0 : i)];
      rest_ = rest_.subspan(1 + stored);
    }
  }
  return true;
}

// The older way: pixels, of which those with three mantissas of 1 say how often the one before them is
// repeated; several of them are the digits of one number, the lowest first.
bool HdrScanlines::readPixels(std::span<HdrPixel> scanline) {
  std::size_t x = 0;
  unsigned shift = 0;
  while (x < scanline.size()) {
    if (rest_.size() < 4) return false;
    const HdrPixel pixel = {rest_[0], rest_[1], rest_[2], rest_[3]};
    rest_ = rest_.subspan(4);
    const bool repeats = pixel[0] == 1 && pixel[1] == 1 && pixel[2] == 1;
    if (!repeats) {
      scanline[x++] = pixel;
      shift = 0;
      continue;
    }
    if (x == 0 || shift > 24) return false;
    const std::size_t count = std::size_t{pixel[3]} << shift;
    if (count > scanline.size() - x) return false;
    std::fill_n(scanline.begin() + static_cast<std::ptrdiff_t>(x), count, HdrPixel(scanline[x - 1]));
    x += count;
    shift += 8;
  }
  return true;
}

bool HdrScanlines::read(std::span<HdrPixel> scanline) {
  constexpr std::size_t kShortest = 8, kLongest = 32'767;
  const bool mayBeChannels = scanline.size() >= kShortest && scanline.size() <= kLongest && rest_.size() >= 4;
  if (!mayBeChannels || rest_[0] != 2 || rest_[1] != 2 || rest_[2] >= 128) return readPixels(scanline);
  if ((std::size_t{rest_[2]} << 8 | rest_[3]) != scanline.size()) return false;
  rest_ = rest_.subspan(4);
  return readChannels(scanline);
}

}  // namespace ostra
