#include "platform/imageio/codecs/wide_samples.h"

#include <algorithm>
#include <cmath>

namespace ostra {
namespace {

std::size_t wordAt(const std::uint8_t* bytes) { return bytes[0] | std::size_t{bytes[1]} << 8; }

void putWord(std::uint8_t* bytes, unsigned value) {
  bytes[0] = static_cast<std::uint8_t>(value);
  bytes[1] = static_cast<std::uint8_t>(value >> 8);
}

}  // namespace

WideSamples::WideSamples(unsigned bits, unsigned newBits, bool videoRange)
    : fromWords_(bits > 8), toWords_(newBits > 8), values_(std::size_t{1} << std::clamp(bits, 1u, 16u)) {
  const auto largest = static_cast<double>(values_.size() - 1);
  const double newLargest = std::exp2(newBits) - 1;
  const double steps = static_cast<double>(values_.size()) / 256;
  const double black = videoRange ? 16 * steps : 0, white = videoRange ? 235 * steps : largest;
  for (std::size_t i = 0; i < values_.size(); ++i) {
    const double part = std::clamp((static_cast<double>(i) - black) / (white - black), 0.0, 1.0);
    values_[i] = static_cast<std::uint16_t>(std::floor(part * newLargest + 0.5));
  }
}

void WideSamples::widen(std::uint8_t* words, std::size_t count) const {
  const std::size_t mask = values_.size() - 1;
  for (std::size_t i = 0; i < count; ++i, words += 2) putWord(words, values_[wordAt(words) & mask]);
}

void WideSamples::spread(const std::uint8_t* from, std::size_t count, std::uint8_t* to, std::size_t step,
                         std::size_t fromStep) const {
  const std::size_t mask = values_.size() - 1;
  for (std::size_t i = 0; i < count; ++i, to += step) {
    const unsigned value =
        values_[(fromWords_ ? wordAt(from + 2 * i * fromStep) : from[i * fromStep]) & mask];
    if (toWords_) {
      putWord(to, value);
    } else {
      *to = static_cast<std::uint8_t>(value);
    }
  }
}

}  // namespace ostra
