#include "engine/invert.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <type_traits>

namespace ostra {
namespace {

template <class Word>
constexpr Word maximum = std::numeric_limits<Word>::max();

template <class Word>
void invertGrayRow(Word* row, std::size_t width) {
  for (std::size_t x = 0; x < width; ++x) row[x] = static_cast<Word>(maximum<Word> - row[x]);
}

/// Maximum minus value flips every bit, so a pixel is inverted as one word. The fourth component, which is
/// skipped and stays, is the highest in little-endian memory.
template <class Word>
void invertOpaqueRow(Word* row, std::size_t width) {
  using Pixel = std::conditional_t<sizeof(Word) == 1, std::uint32_t, std::uint64_t>;
  constexpr Pixel colours = std::numeric_limits<Pixel>::max() >> (8 * sizeof(Word));
  for (std::size_t x = 0; x < width; ++x) {
    Pixel pixel;
    std::memcpy(&pixel, row + 4 * x, sizeof pixel);
    pixel ^= colours;
    std::memcpy(row + 4 * x, &pixel, sizeof pixel);
  }
}

/// In premultiplied colour the inverse of a component is what is missing to its alpha; a component above its
/// alpha, which no valid pixel has, becomes 0.
template <class Word>
void invertTransparentRow(Word* row, std::size_t width) {
  for (Word* pixel = row; pixel != row + 4 * width; pixel += 4) {
    const Word alpha = pixel[3];
    pixel[0] = static_cast<Word>(alpha - std::min(pixel[0], alpha));
    pixel[1] = static_cast<Word>(alpha - std::min(pixel[1], alpha));
    pixel[2] = static_cast<Word>(alpha - std::min(pixel[2], alpha));
  }
}

template <class Word>
void invertRows(CGBitmapContext& surface, std::uint8_t* memory, void (*invertRow)(Word*, std::size_t)) {
  auto* row = reinterpret_cast<Word*>(memory);
  const std::size_t pitch = surface.bytesPerRow() / sizeof(Word);
  for (std::size_t y = 0; y < surface.height(); ++y, row += pitch) invertRow(row, surface.width());
}

template <class Word>
void invertPixels(CGBitmapContext& surface, std::uint8_t* memory, bool keepAlpha) {
  if (surface.colorSpace()->model() == CGColorSpaceModel::monochrome) {
    invertRows<Word>(surface, memory, invertGrayRow<Word>);
  } else {
    invertRows<Word>(surface, memory, keepAlpha ? invertTransparentRow<Word> : invertOpaqueRow<Word>);
  }
}

/// Gray with alpha has no surface, so it is inverted as RGB.
CGColorSpaceRef workingSpace(const CGImage& image, bool keepAlpha) {
  const CGColorSpaceRef& own = image.colorSpace();
  const CGColorSpaceModel model = own ? own->model() : CGColorSpaceModel::unknown;
  const bool ownWorks =
      model == CGColorSpaceModel::rgb || (model == CGColorSpaceModel::monochrome && !keepAlpha);
  return ownWorks ? own : requiredColorSpace(kCGColorSpaceSRGB);
}

}  // namespace

CGImageRef invertImage(const CGImage& image, const SurfaceFormat& format) {
  auto surface = makeSurface(image, workingSpace(image, format.keepAlpha), format);
  if (!surface) return nullptr;
  if (!format.keepAlpha) fillWhite(*surface);
  drawWhole(*surface, image);
  // Asked for after the drawing: one that failed takes the memory away.
  std::uint8_t* memory = surface->data();
  if (memory == nullptr) return nullptr;
  if (surface->bitsPerComponent() == 16) {
    invertPixels<std::uint16_t>(*surface, memory, format.keepAlpha);
  } else {
    invertPixels<std::uint8_t>(*surface, memory, format.keepAlpha);
  }
  return CGBitmapContext::createImage(std::move(surface));
}

}  // namespace ostra
