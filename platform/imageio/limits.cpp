#include "platform/imageio/limits.h"

namespace ostra {

std::optional<std::uint64_t> checkedProduct(std::uint64_t a, std::uint64_t b, std::uint64_t c) {
  std::uint64_t product = 0;
  if (__builtin_mul_overflow(a, b, &product) || __builtin_mul_overflow(product, c, &product))
    return std::nullopt;
  return product;
}

LimitName exceededLimit(const Limits& limits, std::uint64_t width, std::uint64_t height,
                        std::uint64_t bytesPerPixel, std::uint64_t fileSize) {
  const auto pixels = checkedProduct(width, height);
  if (!pixels || *pixels > limits.pixels) return LimitName::pixels;
  const auto bytes = checkedProduct(*pixels, bytesPerPixel);
  if (!bytes || *bytes > limits.decodedBytes) return LimitName::decodedBytes;
  const auto allowed = checkedProduct(fileSize, limits.compressionRatio);
  if (allowed && *bytes > *allowed && *bytes > limits.harmlessBytes) return LimitName::compressionRatio;
  return LimitName::none;
}

}  // namespace ostra
