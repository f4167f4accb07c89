#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/foundation/bytes.h"

namespace ostra {

/// Where the memory of pixels comes from. Replaceable through `Service<PixelStore>`.
class PixelStore {
 public:
  virtual ~PixelStore() = default;
  /// So many zeroed bytes, or null.
  virtual std::shared_ptr<std::uint8_t[]> allocate(std::size_t size) = 0;

  /// The memory of this process.
  static PixelStore& standard();
};

/// Memory for the pixels of one picture. It comes zeroed from the system, so that a decoder that skips a byte
/// shows nobody's old memory, and without a pass over it. Throws `std::bad_alloc`.
class PixelMemory {
 public:
  explicit PixelMemory(std::size_t size);
  std::uint8_t* data() { return bytes_.get(); }
  std::size_t size() const { return size_; }
  /// Gives the memory away as immutable bytes.
  SharedBytes share() &&;

 private:
  std::shared_ptr<std::uint8_t[]> bytes_;
  std::size_t size_;
};

}  // namespace ostra
