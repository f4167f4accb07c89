#include "platform/imageio/codecs/psd_pixels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/lab_colour.h"
#include "platform/imageio/codecs/srgb_curve.h"

namespace ostra {
namespace {

using Planes = PsdPixels::Planes;

template <class Sample>
Sample sampleOf(const std::vector<std::uint8_t>& plane, std::size_t x) {
  if constexpr (sizeof(Sample) == 1) {
    return plane[x];
  } else {
    return bigEndian16(plane, 2 * x);
  }
}

template <class Sample>
void put(std::uint8_t*& row, Sample sample) {
  std::memcpy(row, &sample, sizeof sample);
  row += sizeof sample;
}

// The merged picture lies on white wherever it is transparent.
template <class Sample>
Sample withoutWhite(Sample colour, Sample alpha) {
  constexpr std::int64_t kMost = std::numeric_limits<Sample>::max();
  if (alpha == 0) return 0;
  const std::int64_t own = colour - (kMost - alpha);
  return static_cast<Sample>(std::clamp<std::int64_t>((own * kMost + alpha / 2) / alpha, 0, kMost));
}

double withoutWhite(double light, double alpha) { return alpha > 0 ? (light - (1 - alpha)) / alpha : 0; }

// No number becomes 0.
double clamped(double value) { return value > 0 ? std::min(value, 1.0) : 0; }

std::uint16_t word(double value) { return static_cast<std::uint16_t>(std::lround(clamped(value) * 65535)); }

double floatOf(const std::vector<std::uint8_t>& plane, std::size_t x) {
  return std::bit_cast<float>(bigEndian32(plane, 4 * x));
}

}  // namespace

void PsdPixels::writeBitmap(const Planes& planes, std::uint8_t* row) const {
  for (std::size_t x = 0; x < psd_.width; ++x) {
    const bool black = (planes[0][x / 8] >> (7 - x % 8) & 1) != 0;
    row[x] = black ? 0 : 255;
  }
}

void PsdPixels::writeIndexed(const Planes& planes, std::uint8_t* row) const {
  for (std::size_t x = 0; x < psd_.width; ++x) {
    const std::size_t entry = planes[0][x];
    const bool hidden = psd_.transparentEntry == entry;
    for (std::size_t c = 0; c < 3; ++c) put(row, hidden ? std::uint8_t{0} : psd_.palette[256 * c + entry]);
    put<std::uint8_t>(row, hidden ? 0 : 255);
  }
}

void PsdPixels::writeLab(const Planes& planes, std::uint8_t* row) const {
  const bool deep = psd_.bits == 16;
  for (std::size_t x = 0; x < psd_.width; ++x) {
    const auto sample = [&](std::size_t c) -> std::uint16_t {
      const std::uint16_t stored = deep ? sampleOf<std::uint16_t>(planes[c], x) : planes[c][x];
      if (!psd_.hasAlpha()) return stored;
      // White is no colour in a and b: their middle.
      const std::uint16_t alpha = deep ? sampleOf<std::uint16_t>(planes[3], x) : planes[3][x];
      const double most = deep ? 65535 : 255, middle = deep ? 32768 : 128;
      const double share = alpha / most, white = c == 0 ? most : middle;
      const double own = share > 0 ? (stored - white * (1 - share)) / share : 0;
      return static_cast<std::uint16_t>(std::lround(std::clamp(own, 0.0, most)));
    };
    const double lightness = sample(0) * 100.0 / (deep ? 65535 : 255);
    const auto chroma = [&](std::size_t c) { return deep ? (sample(c) - 32768) / 256.0 : sample(c) - 128.0; };
    for (const std::uint16_t value : rommOfLab(lightness, chroma(1), chroma(2))) put(row, value);
    const std::uint16_t alpha = !psd_.hasAlpha() ? 65535
                                : deep           ? sampleOf<std::uint16_t>(planes[3], x)
                                                 : static_cast<std::uint16_t>(planes[3][x] * 257);
    put(row, alpha);
  }
}

template <class Sample>
void PsdPixels::writeWhole(const Planes& planes, std::uint8_t* row) const {
  constexpr Sample kMost = std::numeric_limits<Sample>::max();
  const std::size_t colours = psd_.colours();
  const bool hasAlpha = psd_.hasAlpha(), isInk = psd_.mode == PsdMode::cmyk;
  for (std::size_t x = 0; x < psd_.width; ++x) {
    const Sample alpha = hasAlpha ? sampleOf<Sample>(planes[colours], x) : kMost;
    for (std::size_t c = 0; c < colours; ++c) {
      const Sample stored = sampleOf<Sample>(planes[c], x);
      const auto colour = isInk ? static_cast<Sample>(kMost - stored) : stored;
      put(row, hasAlpha ? withoutWhite(colour, alpha) : colour);
    }
    if (hasAlpha || colours == 3) put(row, alpha);
  }
}

void PsdPixels::writeFloats(const Planes& planes, std::uint8_t* row) const {
  const std::size_t colours = psd_.colours();
  const bool hasAlpha = psd_.hasAlpha();
  for (std::size_t x = 0; x < psd_.width; ++x) {
    const double alpha = hasAlpha ? clamped(floatOf(planes[colours], x)) : 1;
    for (std::size_t c = 0; c < colours; ++c) {
      const double stored = floatOf(planes[c], x);
      const double light = hasAlpha ? withoutWhite(stored, alpha) : stored;
      put(row, word(lightIsLinear_ ? light : srgbValueOfLight(light)));
    }
    if (hasAlpha || colours == 3) put(row, word(alpha));
  }
}

void PsdPixels::write(const Planes& planes, std::uint8_t* row) const {
  if (psd_.mode == PsdMode::bitmap) return writeBitmap(planes, row);
  if (psd_.mode == PsdMode::indexed) return writeIndexed(planes, row);
  if (psd_.mode == PsdMode::lab) return writeLab(planes, row);
  if (psd_.bits == 8) return writeWhole<std::uint8_t>(planes, row);
  if (psd_.bits == 16) return writeWhole<std::uint16_t>(planes, row);
  writeFloats(planes, row);
}

}  // namespace ostra
