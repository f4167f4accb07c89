#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ostra {

/// Samples of 8 to 16 bits (more than 8 as little-endian words) made samples of 8 or 16, black staying black
/// and white white: value times the largest new one by the largest old one, to the nearest.
class WideSamples {
 public:
  /// In the range of video, black and white are 16 and 235 of 8 bits; what lies beyond becomes them.
  WideSamples(unsigned bits, unsigned newBits, bool videoRange = false);

  /// Words of the old bits, in their place.
  void widen(std::uint8_t* words, std::size_t count) const;
  /// Of a row every `fromStep`-th sample to every `step`-th byte.
  void spread(const std::uint8_t* from, std::size_t count, std::uint8_t* to, std::size_t step,
              std::size_t fromStep = 1) const;

 private:
  bool fromWords_, toWords_;
  std::vector<std::uint16_t> values_;
};

}  // namespace ostra
