#include "platform/imageio/decoder/page_filling.h"

#include <algorithm>
#include <system_error>
#include <thread>

#include <sys/mman.h>

namespace ostra {
namespace {

constexpr std::size_t kWorthAThread = std::size_t{16} << 20;
constexpr std::size_t kHarmless = std::size_t{512} << 20;
// Short turns: whoever maps memory meanwhile waits for one of them.
constexpr std::size_t kTurn = std::size_t{2} << 20;

// Newer than the C library's header.
#ifndef MADV_POPULATE_WRITE
constexpr int MADV_POPULATE_WRITE = 23;
#endif

void fill(std::uint8_t* memory, std::size_t size) {
  for (std::size_t done = 0; done < size; done += kTurn) {
    if (madvise(memory + done, std::min(kTurn, size - done), MADV_POPULATE_WRITE) != 0) return;
  }
}

}  // namespace

void fillPagesAhead(std::uint8_t* memory, std::size_t size) {
  if (size < kWorthAThread || size > kHarmless) return;
  try {
    std::thread(fill, memory, size).detach();
  } catch (const std::system_error&) {  // no thread to be had
  }
}

}  // namespace ostra
