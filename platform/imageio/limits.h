#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>

namespace ostra {

enum class LimitName {
  none,
  pixels,
  decodedBytes,
  compressionRatio,
  frames,
  metadataBytes,
  profileBytes,
  scans,
  seconds
};

/// What one file may ask of the machine. All in this struct; every reader is given one. A picture that asks
/// for more is refused as a whole: without the block that is too large it would be another one.
struct Limits {
  /// Width times height; a 500-megapixel photograph passes.
  std::uint64_t pixels = 1'000'000'000;
  /// Memory for the pixels of one decode.
  std::uint64_t decodedBytes = 8'000'000'000;
  /// Decoded bytes for one byte of file; a flat 1-bit PNG packs at about 8,000 once expanded.
  std::uint64_t compressionRatio = 40'000;
  /// Memory that is no matter, however small the file: WebP keeps a flat picture in 40 bytes.
  std::uint64_t harmlessBytes = 256u << 20;
  /// Frames counted; counting stops there, which refuses nothing by itself.
  std::uint32_t frames = 10'000;
  std::size_t metadataBytes = 64u << 20;
  std::size_t profileBytes = 16u << 20;
  /// Passes over the whole picture; no program makes nearly as many.
  std::uint32_t scans = 500;
  std::uint32_t seconds = 300;
};

/// Thrown deep in a reader by what finds that a file goes beyond a limit.
struct LimitExceeded {
  LimitName limit = LimitName::none;
};

/// a times b times c, or nothing when 64 bits do not hold it.
std::optional<std::uint64_t> checkedProduct(std::uint64_t a, std::uint64_t b, std::uint64_t c = 1);

/// The limit that a picture of this size would break, judged before anything of it is decoded.
LimitName exceededLimit(const Limits& limits, std::uint64_t width, std::uint64_t height,
                        std::uint64_t bytesPerPixel, std::uint64_t fileSize);

}  // namespace ostra
