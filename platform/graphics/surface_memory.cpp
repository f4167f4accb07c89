#include "platform/graphics/surface_memory.h"

#include <cstdlib>

#include <sys/mman.h>

namespace ostra {
namespace {

constexpr std::size_t hugePage = std::size_t{2} << 20;
/// No process has more addresses than these; an allocator need not be asked.
constexpr std::size_t addresses = std::size_t{1} << 47;

/// A large picture touches each of its pages once; fewer, larger ones are fewer faults.
void preferHugePages(std::uint8_t* memory, std::size_t size) {
  if (size < 4 * hugePage) return;
  const auto address = reinterpret_cast<std::uintptr_t>(memory);
  const std::size_t skip = (hugePage - address % hugePage) % hugePage;
  ::madvise(memory + skip, (size - skip) / hugePage * hugePage, MADV_HUGEPAGE);
}

}  // namespace

void FreeMemory::operator()(std::uint8_t* memory) const { std::free(memory); }

SurfaceMemory allocateSurface(std::size_t size) {
  if (size >= addresses) return nullptr;
  SurfaceMemory memory(static_cast<std::uint8_t*>(std::calloc(size, 1)));
  if (memory) preferHugePages(memory.get(), size);
  return memory;
}

}  // namespace ostra
