#pragma once
#include <cstddef>

#include <sys/types.h>

namespace ostra::test {

/// What a process and all that came of it hold at a moment. A process that ends meanwhile counts for nothing.
struct ProcessTree {
  explicit ProcessTree(pid_t root);

  // Of the root alone.
  std::size_t residentBytes = 0;
  std::size_t mostResidentBytes = 0;  // so far
  std::size_t descriptors = 0;
  std::size_t threads = 0;
  std::size_t mappings = 0;
  // Of all.
  std::size_t processes = 0;
  std::size_t zombies = 0;
};

/// The memory of a process and all that came of it: each one's private pages, its share of the pages of
/// files, and memory files once, whoever holds them and whether or not anybody has looked at their pages.
std::size_t memoryOfTree(pid_t root);

}  // namespace ostra::test
