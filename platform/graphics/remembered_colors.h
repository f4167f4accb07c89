#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/graphics/pixel_chunk.h"
#include "platform/graphics/profile_transform.h"

namespace ostra {

/// Runs a transform through a memory of the colours it has converted lately. An exact conversion through
/// tables takes a third of a microsecond, and neighbouring pixels of a picture share their colours. For one
/// thread.
class RememberedColors {
 public:
  RememberedColors();

  /// As the transform's own `run`, for at most 4 components on either side and `PixelChunk::capacity` pixels.
  void run(const ProfileTransform& transform, const std::uint16_t* source, std::uint16_t* destination,
           std::size_t pixels);

  /// The one of this thread, or null when there is no memory for it.
  static RememberedColors* ofThisThread();

 private:
  struct Color {
    std::uint64_t source, destination;
  };
  using Words = std::array<std::uint16_t, 4 * PixelChunk::capacity>;

  void forget();
  Color& slotOf(std::uint64_t color);
  std::size_t collectUnknown(const std::uint16_t* source, std::size_t components, std::size_t pixels);

  std::uint64_t transform_ = 0;
  std::vector<Color> colors_;
  Words unknown_, converted_;
  std::array<std::uint64_t, PixelChunk::capacity> results_;
  std::array<std::size_t, PixelChunk::capacity> unknownAt_;
};

}  // namespace ostra
