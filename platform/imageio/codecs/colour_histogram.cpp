#include "platform/imageio/codecs/colour_histogram.h"

#include <algorithm>

namespace ostra {
namespace {

std::uint32_t numberOf(const Rgb& colour) {
  return std::uint32_t{colour[0]} << 16 | std::uint32_t{colour[1]} << 8 | colour[2];
}
Rgb colourOf(std::uint32_t number) {
  return {static_cast<std::uint8_t>(number >> 16), static_cast<std::uint8_t>(number >> 8),
          static_cast<std::uint8_t>(number)};
}

}  // namespace

void ColourHistogram::addToCube(const Rgb& colour, std::uint64_t pixels) {
  const auto part = [&](std::size_t c) { return std::size_t{colour[c]} >> kShift; };
  Cube& cube = cubes_[part(0) << 2 * kBits | part(1) << kBits | part(2)];
  for (std::size_t c = 0; c < 3; ++c) cube.sums[c] += colour[c] * pixels;
  cube.pixels += pixels;
}

void ColourHistogram::add(const Rgb& colour) {
  if (!cubes_.empty()) return addToCube(colour, 1);
  ++exact_[numberOf(colour)];
  if (exact_.size() <= kFew) return;
  cubes_.resize(std::size_t{1} << 3 * kBits);
  for (const auto& [number, pixels] : exact_) addToCube(colourOf(number), pixels);
  exact_.clear();
}

std::vector<ColourCount> ColourHistogram::counts() const {
  std::vector<ColourCount> counts;
  for (const auto& [number, pixels] : exact_) counts.push_back({colourOf(number), pixels});
  std::sort(counts.begin(), counts.end(),
            [](const ColourCount& a, const ColourCount& b) { return a.colour < b.colour; });
  for (const Cube& cube : cubes_) {
    if (cube.pixels == 0) continue;
    ColourCount mean{{}, cube.pixels};
    for (std::size_t c = 0; c < 3; ++c)
      mean.colour[c] = static_cast<std::uint8_t>((cube.sums[c] + cube.pixels / 2) / cube.pixels);
    counts.push_back(mean);
  }
  return counts;
}

}  // namespace ostra
