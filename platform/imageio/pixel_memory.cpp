#include "platform/imageio/pixel_memory.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace ostra {

PixelMemory::PixelMemory(std::size_t size)
    : bytes_(static_cast<std::uint8_t*>(std::calloc(size, 1)), [](std::uint8_t* bytes) { std::free(bytes); }),
      size_(size) {
  if (bytes_ == nullptr) throw std::bad_alloc();
}

SharedBytes PixelMemory::share() && {
  const ByteView view(bytes_.get(), size_);
  std::shared_ptr<std::uint8_t[]> owner(std::move(bytes_));
  return {std::move(owner), view};
}

}  // namespace ostra
