#include "platform/imageio/decoder/shared_pixels.h"

#include <thread>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

namespace ostra {
namespace {

/// A memory file of one page and a mapping of it that can be written through.
struct WritablePixels {
  WritablePixels() : file(makePixelFile()) {
    if (ftruncate(file.get(), kSize) != 0) throw std::bad_alloc();
    memory = mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
  }
  void unmap() const { munmap(memory, kSize); }

  static constexpr std::size_t kSize = 4096;
  UniqueFd file;
  void* memory;
};

TEST(SharedPixels, AreSealedOnceTheLastWriterIsGone) {
  const WritablePixels pixels;
  std::thread writer([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    pixels.unmap();
  });
  EXPECT_TRUE(sealContents(pixels.file.get()));
  writer.join();
  EXPECT_EQ(mmap(nullptr, pixels.kSize, PROT_READ | PROT_WRITE, MAP_SHARED, pixels.file.get(), 0),
            MAP_FAILED);
}

TEST(SharedPixels, AreNotSealedWhileAWriterStays) {
  const WritablePixels pixels;
  EXPECT_FALSE(sealContents(pixels.file.get()));
  pixels.unmap();
}

}  // namespace
}  // namespace ostra
