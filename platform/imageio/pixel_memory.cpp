#include "platform/imageio/pixel_memory.h"

#include <cstdlib>
#include <new>
#include <utility>

#include "platform/foundation/service.h"

namespace ostra {
namespace {

class ProcessMemory : public PixelStore {
 public:
  std::shared_ptr<std::uint8_t[]> allocate(std::size_t size) override {
    auto* bytes = static_cast<std::uint8_t*>(std::calloc(size, 1));
    if (bytes == nullptr) return nullptr;
    return {bytes, [](std::uint8_t* allocated) { std::free(allocated); }};
  }
};

}  // namespace

PixelStore& PixelStore::standard() {
  static ProcessMemory memory;
  return memory;
}

PixelMemory::PixelMemory(std::size_t size)
    : bytes_(Service<PixelStore>::current().allocate(size)), size_(size) {
  if (bytes_ == nullptr) throw std::bad_alloc();
}

SharedBytes PixelMemory::share() && {
  const ByteView view(bytes_.get(), size_);
  return {std::move(bytes_), view};
}

}  // namespace ostra
