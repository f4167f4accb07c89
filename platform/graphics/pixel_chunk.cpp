#include "platform/graphics/pixel_chunk.h"

#include <limits>

#include "platform/graphics/pixel_words.h"
#include "platform/graphics/vector_units.h"

namespace ostra {
namespace {

template <class Word>
constexpr float most = std::numeric_limits<Word>::max();

template <class Word>
void readPlane(const std::uint8_t* row, std::size_t stride, std::size_t count, float* plane) {
  for (std::size_t i = 0; i < count; ++i)
    plane[i] = static_cast<float>(loadWord<Word>(row, i * stride)) / most<Word>;
}

void readComponent(const PixelFormat& format, const std::uint8_t* row, std::size_t index, std::size_t count,
                   float* plane) {
  const std::uint8_t* first = row + index * format.bytesPerComponent;
  if (format.bytesPerComponent == 1)
    readPlane<std::uint8_t>(first, format.componentsPerPixel, count, plane);
  else
    readPlane<std::uint16_t>(first, format.componentsPerPixel, count, plane);
}

/// Colour above its alpha is no colour; it counts as the strongest.
void divide(float* plane, const float* alpha, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const float straight = alpha[i] > 0 ? plane[i] / alpha[i] : 0.0f;
    plane[i] = straight < 1.0f ? straight : 1.0f;
  }
}

template <class Word>
std::uint32_t rounded(float value) {
  return static_cast<std::uint32_t>(static_cast<std::int32_t>(value * most<Word> + 0.5f));
}

/// `values` are products with alpha already, or alpha itself.
template <class Word>
void storeOver(const float* values, const float* alpha, std::uint8_t* row, std::size_t stride,
               std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const float held = loadWord<Word>(row, i * stride);
    const float result = values[i] * most<Word> + held * (1.0f - alpha[i]);
    storeWord<Word>(row, i * stride, static_cast<Word>(result + 0.5f));
  }
}

template <class Word>
void drawOver(const PixelChunk& chunk, const PixelFormat& surface, std::uint8_t* row) {
  std::array<float, PixelChunk::capacity> product;
  const std::size_t stride = surface.componentsPerPixel;
  for (std::size_t c = 0; c < surface.colors; ++c) {
    for (std::size_t i = 0; i < chunk.count; ++i) product[i] = chunk.color[c][i] * chunk.alpha[i];
    storeOver<Word>(product.data(), chunk.alpha.data(), row + c * sizeof(Word), stride, chunk.count);
  }
  if (surface.alpha != AlphaKind::none)
    storeOver<Word>(chunk.alpha.data(), chunk.alpha.data(), row + surface.alphaIndex * sizeof(Word), stride,
                    chunk.count);
}

/// RGB bytes with a fourth, a word a pixel.
template <bool keepsAlpha>
OSTRA_VECTORISED void drawBytesOver(const PixelChunk& chunk, std::uint8_t* __restrict row) {
  const float* const __restrict r = chunk.color[0].data();
  const float* const __restrict g = chunk.color[1].data();
  const float* const __restrict b = chunk.color[2].data();
  const float* const __restrict alpha = chunk.alpha.data();
  const std::size_t count = chunk.count;
  for (std::size_t i = 0; i < count; ++i) {
    const auto held = loadWord<std::uint32_t>(row, i);
    const float a = alpha[i], rest = (1.0f - a) / 255.0f;
    const auto over = [&](float value, std::uint32_t shift) {
      return rounded<std::uint8_t>(value +
                                   static_cast<float>(static_cast<std::int32_t>(held >> shift & 255)) * rest)
             << shift;
    };
    const std::uint32_t fourth = keepsAlpha ? over(a, 24) : held & 0xFF000000u;
    storeWord<std::uint32_t>(row, i, over(r[i] * a, 0) | over(g[i] * a, 8) | over(b[i] * a, 16) | fourth);
  }
}

template <class Word>
void fillComponent(std::uint8_t* row, std::size_t stride, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) storeWord<Word>(row, i * stride, std::numeric_limits<Word>::max());
}

/// The usual case, RGB and an opaque fourth, written as one word a pixel.
OSTRA_VECTORISED void replaceBytes(const float* __restrict r, const float* __restrict g,
                                   const float* __restrict b, std::uint8_t* __restrict row,
                                   std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t pixel = rounded<std::uint8_t>(r[i]) | rounded<std::uint8_t>(g[i]) << 8 |
                                rounded<std::uint8_t>(b[i]) << 16 | 0xFF000000u;
    storeWord<std::uint32_t>(row, i, pixel);
  }
}

OSTRA_VECTORISED void replaceWords(const float* __restrict r, const float* __restrict g,
                                   const float* __restrict b, std::uint8_t* __restrict row,
                                   std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint64_t low = rounded<std::uint16_t>(r[i]) | rounded<std::uint16_t>(g[i]) << 16;
    const std::uint64_t high = rounded<std::uint16_t>(b[i]) | 0xFFFF0000u;
    storeWord<std::uint64_t>(row, i, low | high << 32);
  }
}

template <class Word>
void replace(const PixelChunk& chunk, const PixelFormat& surface, std::uint8_t* row) {
  const std::size_t stride = surface.componentsPerPixel;
  for (std::size_t c = 0; c < surface.colors; ++c)
    for (std::size_t i = 0; i < chunk.count; ++i)
      storeWord<Word>(row, i * stride + c, static_cast<Word>(rounded<Word>(chunk.color[c][i])));
  if (stride > surface.colors) fillComponent<Word>(row + surface.colors * sizeof(Word), stride, chunk.count);
}

}  // namespace

void readAlpha(const PixelFormat& format, const std::uint8_t* row, PixelChunk& chunk) {
  readComponent(format, row, format.alphaIndex, chunk.count, chunk.alpha.data());
}

void readColors(const PixelFormat& format, const std::uint8_t* row, PixelChunk& chunk) {
  if (format.colors == 0) chunk.color[0].fill(0);
  for (std::size_t c = 0; c < format.colors; ++c) {
    readComponent(format, row, format.firstColor + c, chunk.count, chunk.color[c].data());
    if (format.alpha == AlphaKind::premultiplied)
      divide(chunk.color[c].data(), chunk.alpha.data(), chunk.count);
  }
}

void drawChunk(const PixelChunk& chunk, bool withAlpha, const PixelFormat& surface, std::uint8_t* row) {
  const bool bytes = surface.bytesPerComponent == 1;
  if (withAlpha && bytes && surface.colors == 3)
    return surface.alpha != AlphaKind::none ? drawBytesOver<true>(chunk, row)
                                            : drawBytesOver<false>(chunk, row);
  if (withAlpha)
    return bytes ? drawOver<std::uint8_t>(chunk, surface, row) : drawOver<std::uint16_t>(chunk, surface, row);
  if (surface.colors == 3) {
    const auto replaceAll = bytes ? replaceBytes : replaceWords;
    return replaceAll(chunk.color[0].data(), chunk.color[1].data(), chunk.color[2].data(), row, chunk.count);
  }
  return bytes ? replace<std::uint8_t>(chunk, surface, row) : replace<std::uint16_t>(chunk, surface, row);
}

}  // namespace ostra
