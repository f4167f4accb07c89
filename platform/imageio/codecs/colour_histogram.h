#pragma once
#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "platform/imageio/codecs/nearest_colour.h"

namespace ostra {

/// A colour of a picture, and how many of its pixels have it.
struct ColourCount {
  Rgb colour{};
  std::uint64_t pixels = 0;
};

/// Counts the colours of a picture: each of them while there are few, later small cubes of colours, each as
/// the mean of what lies in it.
class ColourHistogram {
 public:
  void add(const Rgb& colour);
  /// In a fixed order, whatever the order in which they came.
  std::vector<ColourCount> counts() const;

 private:
  static constexpr std::size_t kFew = 65'536;
  static constexpr unsigned kBits = 6, kShift = 8 - kBits;
  struct Cube {
    std::array<std::uint64_t, 3> sums{};
    std::uint64_t pixels = 0;
  };
  void addToCube(const Rgb& colour, std::uint64_t pixels);

  std::unordered_map<std::uint32_t, std::uint64_t> exact_;
  std::vector<Cube> cubes_;  // empty while colours are few
};

}  // namespace ostra
