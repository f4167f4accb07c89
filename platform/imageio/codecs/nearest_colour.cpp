#include "platform/imageio/codecs/nearest_colour.h"

#include <algorithm>
#include <cstdlib>

namespace ostra {
namespace {

int square(int number) { return number * number; }

int distance(const Rgb& a, const Rgb& b) {
  return square(a[0] - b[0]) + square(a[1] - b[1]) + square(a[2] - b[2]);
}

}  // namespace

NearestColour::NearestColour(std::span<const Rgb> palette)
    : palette_(palette.begin(), palette.end()), candidates_(std::size_t{1} << 3 * kBits) {}

void NearestColour::findCandidates(const Rgb& colour, std::vector<std::uint8_t>& candidates) const {
  constexpr int kLast = (1 << kShift) - 1;
  std::array<int, 256> nearest{};
  int reach = INT32_MAX;  // nothing in the cube is farther from its nearest entry
  for (std::size_t entry = 0; entry < palette_.size(); ++entry) {
    int farthest = 0;
    for (std::size_t c = 0; c < 3; ++c) {
      const int low = colour[c] & ~kLast, high = low | kLast, value = palette_[entry][c];
      nearest[entry] += square(std::max({low - value, value - high, 0}));
      farthest += square(std::max(std::abs(value - low), std::abs(value - high)));
    }
    reach = std::min(reach, farthest);
  }
  for (std::size_t entry = 0; entry < palette_.size(); ++entry) {
    if (nearest[entry] <= reach) candidates.push_back(static_cast<std::uint8_t>(entry));
  }
}

std::uint8_t NearestColour::operator()(const Rgb& colour) {
  const auto part = [&](std::size_t c) { return std::size_t{colour[c]} >> kShift; };
  const std::size_t cube = part(0) << 2 * kBits | part(1) << kBits | part(2);
  std::vector<std::uint8_t>& candidates = candidates_[cube];
  if (candidates.empty()) findCandidates(colour, candidates);
  return *std::min_element(candidates.begin(), candidates.end(), [&](std::uint8_t a, std::uint8_t b) {
    return distance(palette_[a], colour) < distance(palette_[b], colour);
  });
}

}  // namespace ostra
