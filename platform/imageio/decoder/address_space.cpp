#include "platform/imageio/decoder/address_space.h"

#include <algorithm>

#include <sys/resource.h>

namespace ostra {
namespace {

// The program with its libraries takes about a hundred MiB of addresses; structure and metadata the rest.
constexpr std::uint64_t kBaseBytes = std::uint64_t{512} << 20;
// What a surface can hold, and what a decoder may keep beside it: all coefficients of a progressive JPEG, the
// planes of a video frame.
constexpr std::uint64_t kBytesPerPixel = 8;
constexpr std::uint64_t kScratchPerPixel = 16;

struct Allowance {
  std::uint64_t addresses;
  std::uint64_t pixelFile;
  std::uint64_t seconds;
};

/// Sets soft limits only, never above the hard ones. `decoder` 0 is the calling process.
bool set(pid_t decoder, const Allowance& allowance) {
  const std::pair<__rlimit_resource, std::uint64_t> values[] = {
      {RLIMIT_AS, allowance.addresses}, {RLIMIT_FSIZE, allowance.pixelFile}, {RLIMIT_CPU, allowance.seconds}};
  return std::all_of(std::begin(values), std::end(values), [decoder](const auto& value) {
    rlimit limit{};
    if (prlimit(decoder, value.first, nullptr, &limit) != 0) return false;
    limit.rlim_cur = std::min<rlim_t>(value.second, limit.rlim_max);
    return prlimit(decoder, value.first, &limit, nullptr) == 0;
  });
}

void forbid(__rlimit_resource resource) {
  const rlimit nothing{0, 0};
  setrlimit(resource, &nothing);
}

}  // namespace

void limitOpening(std::uint64_t fileSize) {
  forbid(RLIMIT_CORE);
  forbid(RLIMIT_MEMLOCK);
  set(0, {kBaseBytes + fileSize, 0, kOpeningSeconds});
}

bool allowDecoding(pid_t decoder, const Opened& opened, const Limits& limits, std::uint64_t fileSize) {
  const std::uint64_t claimed = std::uint64_t{opened.width} * opened.height;
  const std::uint64_t pixels = claimed == 0 ? limits.pixels : std::min(claimed, limits.pixels);
  const std::uint64_t pixelFile = std::min(pixels * kBytesPerPixel, limits.decodedBytes) + (1U << 20);
  const std::uint64_t scratch = std::min(pixels * kScratchPerPixel, 2 * limits.decodedBytes);
  return set(decoder, {kBaseBytes + fileSize + pixelFile + scratch, pixelFile, limits.seconds});
}

std::chrono::seconds allowEncoding(pid_t encoder, const Layout& layout, std::uint64_t size) {
  // Planes of 16 bits, the frames that predict from each other, and what is searched with: a video encoder
  // keeps some dozen pictures of one.
  constexpr std::uint64_t kScratch = 256;
  constexpr std::uint64_t kPixelsASecond = 50'000;
  const std::uint64_t pixels = std::uint64_t{layout.width} * layout.height;
  const std::uint64_t seconds = 120 + pixels / kPixelsASecond;
  set(encoder, {2 * kBaseBytes + size + pixels * kScratch, 0, seconds});
  return std::chrono::seconds(4 * seconds);
}

}  // namespace ostra
