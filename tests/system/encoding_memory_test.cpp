#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/platform/imageio/picture_files.h"
#include "tests/support/child.h"

namespace ostra::test {
namespace {

void forgetPeak() { std::ofstream("/proc/self/clear_refs") << 5; }

/// The most memory that this process has had since, in bytes.
std::size_t peakOfThisProcess() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("VmHWM:")) return std::stoul(line.substr(6)) * 1024;
  return 0;
}

TEST(EncodingMemory, HoldsAPngOnceAndNothingBesides) {
  const auto encode = [] {
    constexpr std::uint32_t kSide = 2048;
    Pixels pixels = pixelsOf(randomBytes(std::size_t{kSide} * kSide * 8), kSide, kSide,
                             CGColorSpaceModel::rgb, 16, CGImageAlphaInfo::last);
    pixels.layout.bitmapInfo =
        static_cast<CGBitmapInfo>(CGImageAlphaInfo::premultipliedLast) | kCGBitmapByteOrder16Little;
    forgetPeak();
    const std::size_t before = peakOfThisProcess();
    const Bytes file = encoded("public.png", pixels);
    EXPECT_GT(file.size(), pixels.bytes.view.size() / 4);
    EXPECT_LT(peakOfThisProcess(), before + file.size() + (4 << 20));
  };
  EXPECT_EQ(runInChild(encode), 0);
}

}  // namespace
}  // namespace ostra::test
