#pragma once
#include <chrono>
#include <cstdint>

namespace ostra {

/// The time that one decode may take, asked by a codec's progress call. Without a destructor, so that a
/// library may jump over it.
class DecodeClock {
 public:
  explicit DecodeClock(std::uint32_t seconds)
      : end_(std::chrono::steady_clock::now() + std::chrono::seconds(seconds)) {}
  bool isOver() const { return std::chrono::steady_clock::now() > end_; }

 private:
  std::chrono::steady_clock::time_point end_;
};

}  // namespace ostra
