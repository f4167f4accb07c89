#pragma once
#include <atomic>
#include <cstdint>

namespace ostra::test {

/// What a test and a program with `failing_memory` loaded before it share: the contents of a file.
struct MemoryCount {
  std::atomic<std::uint64_t> calls = 0;  // allocations so far
  std::uint64_t failing = 0;             // the one that fails, from 1; 0: none
  std::uint64_t inDecoder = 0;           // of the process that decodes rather than of the program
  std::uint64_t failed = 0;              // whether it came to that
};

}  // namespace ostra::test
