#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/imageio/codecs/nearest_colour.h"

namespace ostra {

/// The colours of a picture in the order in which they came first, as long as a palette holds them.
class FewColours {
 public:
  static constexpr std::size_t kMost = 256;

  /// Adds a colour that is new. From the 257th on there are too many, and nothing is added.
  void add(const Rgb& colour) {
    if (tooMany_) return;
    std::uint16_t& slot = slotOf(colour);
    if (slot != 0) return;
    if (colours_.size() == kMost) {
      tooMany_ = true;
      return;
    }
    colours_.push_back(colour);
    slot = static_cast<std::uint16_t>(colours_.size());
  }
  bool areTooMany() const { return tooMany_; }
  const std::vector<Rgb>& colours() const { return colours_; }
  /// The place of a colour that was added.
  std::size_t placeOf(const Rgb& colour) { return slotOf(colour) - std::size_t{1}; }

 private:
  // A table that is a quarter full at the most: the slot of the colour, or the free one where it belongs.
  std::uint16_t& slotOf(const Rgb& colour) {
    const std::uint32_t number = std::uint32_t{colour[0]} << 16 | std::uint32_t{colour[1]} << 8 | colour[2];
    std::size_t at = number * 2654435761u >> 22;
    while (slots_[at] != 0 && colours_[slots_[at] - 1u] != colour) at = (at + 1) % slots_.size();
    return slots_[at];
  }

  std::vector<Rgb> colours_;
  std::array<std::uint16_t, 1024> slots_{};  // places counted from 1
  bool tooMany_ = false;
};

}  // namespace ostra
