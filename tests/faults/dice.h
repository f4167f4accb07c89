#pragma once
#include <cstdint>
#include <random>
#include <vector>

namespace ostra::test {

/// Chances that are the same for the same seed and index, whatever was thrown for another index.
class Dice {
 public:
  Dice(std::uint32_t seed, std::uint64_t index) {
    std::seed_seq sequence{seed, static_cast<std::uint32_t>(index), static_cast<std::uint32_t>(index >> 32)};
    engine_.seed(sequence);
  }

  /// 0 to `count` - 1; 0 where there is nothing to choose from.
  std::size_t below(std::size_t count) {
    return count == 0 ? 0 : static_cast<std::size_t>(engine_() % count);
  }
  bool hits(std::size_t percent) { return below(100) < percent; }
  std::uint8_t byte() { return static_cast<std::uint8_t>(below(256)); }
  template <class T>
  const T& oneOf(const std::vector<T>& all) {
    return all[below(all.size())];
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace ostra::test
