#pragma once
#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace ostra {

/// Red, green, blue.
using Rgb = std::array<std::uint8_t, 3>;

/// Finds the entry of a palette that is nearest to a colour, by the sum of squared differences; of several
/// the first. For each small cube of colours that is asked for, the few entries that can be nearest to
/// anything in it are kept.
class NearestColour {
 public:
  /// At most 256 entries, at least one.
  explicit NearestColour(std::span<const Rgb> palette);
  std::uint8_t operator()(const Rgb& colour);

 private:
  static constexpr unsigned kBits = 5, kShift = 8 - kBits;
  void findCandidates(const Rgb& colour, std::vector<std::uint8_t>& candidates) const;

  std::vector<Rgb> palette_;
  std::vector<std::vector<std::uint8_t>> candidates_;
};

}  // namespace ostra
