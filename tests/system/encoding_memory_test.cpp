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
    // The file is a little more than 16 MiB: one that doubles whenever it is full would be held twice just
    // before.
    constexpr std::uint32_t kSide = 1700;
    Bytes samples = randomBytes(std::size_t{kSide} * kSide * 8);
    for (std::size_t i = 6; i < samples.size(); i += 8) samples[i] = samples[i + 1] = 0xFF;
    Pixels pixels =
        pixelsOf(std::move(samples), kSide, kSide, CGColorSpaceModel::rgb, 16, CGImageAlphaInfo::last);
    pixels.layout.bitmapInfo =
        static_cast<CGBitmapInfo>(CGImageAlphaInfo::premultipliedLast) | kCGBitmapByteOrder16Little;
    forgetPeak();
    const std::size_t before = peakOfThisProcess();
    const Bytes file = encoded("public.png", pixels);
    EXPECT_GT(file.size(), 16u << 20);
    EXPECT_LT(file.size(), 20u << 20);
    EXPECT_LT(peakOfThisProcess(), before + file.size() + (4 << 20));
  };
  EXPECT_EQ(runInChild(encode), 0);
}

}  // namespace
}  // namespace ostra::test
