#include "platform/graphics/row_threads.h"

#include <algorithm>
#include <system_error>
#include <thread>
#include <vector>

namespace ostra {
namespace {

/// Starting a thread costs about what ten thousand pixels do.
constexpr std::size_t pixelsWorthAThread = std::size_t{128} * 1024;
/// Beyond that the memory, not the processor, is what everybody waits for.
constexpr std::size_t mostThreads = 4;

std::size_t bandsFor(std::size_t rows, std::size_t pixelsInRow) {
  const std::size_t processors = std::max(1u, std::thread::hardware_concurrency());
  const std::size_t worthwhile = rows * pixelsInRow / pixelsWorthAThread;
  return std::clamp<std::size_t>(worthwhile, 1,
                                 std::min({processors, mostThreads, std::max<std::size_t>(rows, 1)}));
}

}  // namespace

void forBandsOfRows(std::size_t rows, std::size_t pixelsInRow,
                    const std::function<void(std::size_t, std::size_t)>& work) {
  const std::size_t bands = bandsFor(rows, pixelsInRow);
  const auto start = [&](std::size_t band) { return rows * band / bands; };
  std::vector<std::thread> threads;
  threads.reserve(bands);
  for (std::size_t band = 1; band < bands; ++band) {
    try {
      threads.emplace_back(work, start(band), start(band + 1));
    } catch (const std::exception&) {
      work(start(band), start(band + 1));
    }
  }
  work(0, start(1));
  for (std::thread& thread : threads) thread.join();
}

}  // namespace ostra
