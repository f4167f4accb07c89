#include "platform/imageio/decoder/shared_pixels.h"

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/imageio/decoder/page_filling.h"
#include "platform/imageio/limits.h"

namespace ostra {
namespace {

constexpr std::uint64_t kPage = 4096;

bool seal(int file, int seals) { return fcntl(file, F_ADD_SEALS, seals) == 0; }

}  // namespace

std::shared_ptr<std::uint8_t[]> SharedPixels::allocate(std::size_t size) {
  std::uint64_t end = 0;
  if (__builtin_add_overflow(size_, std::uint64_t{size} + (kPage - 1), &end)) return nullptr;
  end -= end % kPage;
  if (ftruncate(file_, static_cast<off_t>(end)) != 0) return nullptr;
  void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file_, static_cast<off_t>(size_));
  if (memory == MAP_FAILED) return nullptr;
  auto* bytes = static_cast<std::uint8_t*>(memory);
  fillPagesAhead(bytes, size);
  regions_.push_back({bytes, size_, size});
  size_ = end;
  return {bytes, [](std::uint8_t*) {}};
}

std::optional<std::uint64_t> SharedPixels::offsetOf(ByteView bytes) const {
  for (const Region& region : regions_) {
    if (bytes.data() < region.begin || bytes.data() > region.begin + region.size) continue;
    const auto within = static_cast<std::uint64_t>(bytes.data() - region.begin);
    if (bytes.size() <= region.size - within) return region.offset + within;
  }
  return std::nullopt;
}

UniqueFd makePixelFile() {
  UniqueFd file(memfd_create("pixels", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!file) throw std::system_error(errno, std::generic_category(), "memfd_create");
  return file;
}

bool sealSize(int pixelFile) { return seal(pixelFile, F_SEAL_SHRINK | F_SEAL_GROW); }
bool sealContents(int pixelFile) {
  // A program that looks at our processes, such as ps or top, holds the memory of the one that it looks at
  // for a moment longer than that lives, and with it the mapping that was written through.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (!seal(pixelFile, F_SEAL_WRITE | F_SEAL_SEAL)) {
    if (errno != EBUSY || std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

std::optional<std::uint64_t> sizeOf(int pixelFile) {
  struct stat status {};
  if (fstat(pixelFile, &status) != 0) return std::nullopt;
  return static_cast<std::uint64_t>(status.st_size);
}

std::optional<SharedBytes> mapPixels(int pixelFile, std::uint64_t offset, std::uint64_t size) {
  const std::uint64_t skipped = offset % kPage;
  const std::size_t length = size + skipped;
  void* memory =
      mmap(nullptr, length, PROT_READ, MAP_SHARED, pixelFile, static_cast<off_t>(offset - skipped));
  if (memory == MAP_FAILED) return std::nullopt;
  std::shared_ptr<const void> owner(
      memory, [length](const void* mapped) { munmap(const_cast<void*>(mapped), length); });
  return SharedBytes{std::move(owner), ByteView(static_cast<const std::uint8_t*>(memory) + skipped, size)};
}

}  // namespace ostra
