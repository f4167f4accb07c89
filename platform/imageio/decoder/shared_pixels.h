#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/foundation/unique_fd.h"
#include "platform/imageio/pixel_memory.h"

namespace ostra {

/// Memory for pixels that another process will read, in one memory file; it grows with each allocation.
/// Single-threaded. What was allocated stays mapped until the process ends.
class SharedPixels : public PixelStore {
 public:
  /// Of a memory file of size 0, which stays the caller's.
  explicit SharedPixels(int memoryFile) : file_(memoryFile) {}

  std::shared_ptr<std::uint8_t[]> allocate(std::size_t size) override;
  /// Where in the file bytes lie that were allocated here; nothing for any others.
  std::optional<std::uint64_t> offsetOf(ByteView bytes) const;

 private:
  struct Region {
    const std::uint8_t* begin;
    std::uint64_t offset, size;
  };

  const int file_;
  std::uint64_t size_ = 0;
  std::vector<Region> regions_;
};

/// An empty memory file that can be sealed; throws `std::system_error`.
UniqueFd makePixelFile();
/// Nobody may change the size from now on; false when that cannot be had.
bool sealSize(int pixelFile);
/// Nobody may change the contents from now on; false when a process still could after some seconds.
bool sealContents(int pixelFile);
std::optional<std::uint64_t> sizeOf(int pixelFile);
/// Part of a sealed memory file, mapped without a copy; nothing when it cannot be mapped. The part lies
/// within the file.
std::optional<SharedBytes> mapPixels(int pixelFile, std::uint64_t offset, std::uint64_t size);

}  // namespace ostra
