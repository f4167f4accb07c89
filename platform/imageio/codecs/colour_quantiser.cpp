#include "platform/imageio/codecs/colour_quantiser.h"

#include <algorithm>
#include <optional>
#include <span>

namespace ostra {
namespace {

using Colours = std::span<ColourCount>;

// Sums over colours, of which means and squared differences from the mean are made. Whole numbers, exact in a
// double up to a gigapixel and beyond.
struct Sums {
  double pixels = 0;
  std::array<double, 3> first{};
  double second = 0;

  void add(const ColourCount& count) {
    const auto weight = static_cast<double>(count.pixels);
    pixels += weight;
    for (std::size_t c = 0; c < 3; ++c) {
      first[c] += weight * count.colour[c];
      second += weight * count.colour[c] * count.colour[c];
    }
  }
  // What remains of the squares when the mean is taken away.
  double error() const {
    if (pixels == 0) return 0;
    return second - (first[0] * first[0] + first[1] * first[1] + first[2] * first[2]) / pixels;
  }
  Rgb mean() const {
    Rgb colour{};
    for (std::size_t c = 0; c < 3; ++c) colour[c] = static_cast<std::uint8_t>(first[c] / pixels + 0.5);
    return colour;
  }
};

Sums operator-(Sums a, const Sums& b) {
  a.pixels -= b.pixels;
  a.second -= b.second;
  for (std::size_t c = 0; c < 3; ++c) a.first[c] -= b.first[c];
  return a;
}

Sums sumsOf(std::span<const ColourCount> colours) {
  Sums sums;
  for (const ColourCount& count : colours) sums.add(count);
  return sums;
}

void sortAlong(Colours colours, std::size_t axis) {
  std::sort(colours.begin(), colours.end(), [axis](const ColourCount& a, const ColourCount& b) {
    return a.colour[axis] != b.colour[axis] ? a.colour[axis] < b.colour[axis] : a.colour < b.colour;
  });
}

struct Cut {
  std::size_t axis = 0, position = 0;
  double error = 0;  // of both parts
};

// The cut across one axis that leaves the least error; between colours, never through one.
std::optional<Cut> bestCut(Colours colours, const Sums& whole, std::size_t axis) {
  sortAlong(colours, axis);
  std::optional<Cut> best;
  Sums below;
  for (std::size_t i = 0; i + 1 < colours.size(); ++i) {
    below.add(colours[i]);
    if (colours[i].colour[axis] == colours[i + 1].colour[axis]) continue;
    const double error = below.error() + (whole - below).error();
    if (!best || error < best->error) best = Cut{axis, i + 1, error};
  }
  return best;
}

// Some colours, and what dividing them would gain.
class Box {
 public:
  explicit Box(Colours colours) : colours_(colours), sums_(sumsOf(colours)) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const auto cut = bestCut(colours_, sums_, axis);
      if (cut && (!cut_ || cut->error < cut_->error)) cut_ = cut;
    }
  }
  double gain() const { return cut_ ? sums_.error() - cut_->error : -1; }
  bool isDivisible() const { return cut_.has_value(); }
  Rgb mean() const { return sums_.mean(); }
  std::pair<Box, Box> divided() const {
    sortAlong(colours_, cut_->axis);
    return {Box(colours_.first(cut_->position)), Box(colours_.subspan(cut_->position))};
  }

 private:
  Colours colours_;
  Sums sums_;
  std::optional<Cut> cut_;
};

std::vector<Rgb> meansOfBoxes(Colours colours, std::size_t most) {
  std::vector<Box> boxes = {Box(colours)};
  while (boxes.size() < most) {
    const auto gainsMost = std::max_element(boxes.begin(), boxes.end(),
                                            [](const Box& a, const Box& b) { return a.gain() < b.gain(); });
    if (!gainsMost->isDivisible()) break;
    auto [below, above] = gainsMost->divided();
    *gainsMost = below;
    boxes.push_back(above);
  }
  std::vector<Rgb> palette;
  palette.reserve(boxes.size());
  for (const Box& box : boxes) palette.push_back(box.mean());
  return palette;
}

// An entry that nothing is nearest to stays where it was.
std::vector<Rgb> meansOfNearest(std::span<const ColourCount> colours, const std::vector<Rgb>& palette) {
  NearestColour nearest(palette);
  std::vector<Sums> sums(palette.size());
  for (const ColourCount& count : colours) sums[nearest(count.colour)].add(count);
  std::vector<Rgb> means = palette;
  for (std::size_t entry = 0; entry < palette.size(); ++entry) {
    if (sums[entry].pixels > 0) means[entry] = sums[entry].mean();
  }
  return means;
}

}  // namespace

std::vector<Rgb> quantisedPalette(std::vector<ColourCount> counts, std::size_t most) {
  if (counts.empty()) return {Rgb{}};
  std::vector<Rgb> palette = meansOfBoxes(counts, most);
  // Measured on photographs: the first rounds bring nearly all.
  constexpr int kRounds = 12;
  for (int round = 0; round < kRounds; ++round) {
    std::vector<Rgb> better = meansOfNearest(counts, palette);
    if (better == palette) break;
    palette = std::move(better);
  }
  return palette;
}

}  // namespace ostra
