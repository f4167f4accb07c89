#pragma once
#include <cstddef>
#include <functional>

namespace ostra {

/// Calls `work(first, last)` for bands that together are all rows, on several threads where there are pixels
/// enough to gain by it; returns when all are done. Where a thread cannot be had its band is done by the
/// caller. `work` does not throw.
void forBandsOfRows(std::size_t rows, std::size_t pixelsInRow,
                    const std::function<void(std::size_t first, std::size_t last)>& work);

}  // namespace ostra
