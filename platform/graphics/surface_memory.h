#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>

namespace ostra {

struct FreeMemory {
  void operator()(std::uint8_t* memory) const;
};

/// Zeroed memory of a drawing surface. Pages cost nothing until they are touched. Null when there is none to
/// be had.
using SurfaceMemory = std::unique_ptr<std::uint8_t, FreeMemory>;
SurfaceMemory allocateSurface(std::size_t size);

}  // namespace ostra
