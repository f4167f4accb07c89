#include "platform/graphics/pixel_copy.h"

#include <limits>
#include <type_traits>

#include "platform/graphics/pixel_words.h"
#include "platform/graphics/vector_units.h"

namespace ostra {
namespace {

/// Numerators of one depth fit 32 bits unless they are sums of products of words.
template <class From, class To>
using Wide = std::conditional_t<sizeof(From) == 1 && sizeof(To) == 1, std::uint32_t, std::uint64_t>;

template <class Word>
constexpr std::uint64_t most = std::numeric_limits<Word>::max();

template <class From, class To>
To scaled(From value) {
  if constexpr (sizeof(From) == sizeof(To)) return value;
  return static_cast<To>((value * most<To> + most<From> / 2) / most<From>);
}

/// Straight color c, alpha a, held value d: (c·a + d·(1 - a)), each as a fraction of its most.
template <class From, class To>
To straightOver(From color, From alpha, To held) {
  using W = Wide<From, To>;
  constexpr W from = most<From>, to = most<To>;
  if constexpr (sizeof(From) == sizeof(To))
    return static_cast<To>((W(color) * alpha + W(held) * (from - alpha) + from / 2) / from);
  else
    return static_cast<To>((W(color) * alpha * to + W(held) * (from - alpha) * from + from * from / 2) /
                           (from * from));
}

template <class From, class To>
To premultipliedOver(From color, From alpha, To held) {
  using W = Wide<From, To>;
  constexpr W from = most<From>, to = most<To>;
  const W bounded = color < alpha ? color : alpha;
  return static_cast<To>((bounded * to + W(held) * (from - alpha) + from / 2) / from);
}

template <class From, class To>
void copyOpaque(const PixelFormat& p, const std::uint8_t* from, const PixelFormat& s, std::uint8_t* to,
                std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t source = i * p.componentsPerPixel + p.firstColor, target = i * s.componentsPerPixel;
    for (std::size_t c = 0; c < s.colors; ++c)
      storeWord<To>(to, target + c, scaled<From, To>(loadWord<From>(from, source + c)));
    if (s.componentsPerPixel > s.colors) storeWord<To>(to, target + s.colors, std::numeric_limits<To>::max());
  }
}

template <class From, class To>
void copyOver(const PixelFormat& p, const std::uint8_t* from, const PixelFormat& s, std::uint8_t* to,
              std::size_t count) {
  const bool straight = p.alpha == AlphaKind::straight;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t source = i * p.componentsPerPixel, target = i * s.componentsPerPixel;
    const From alpha = loadWord<From>(from, source + p.alphaIndex);
    for (std::size_t c = 0; c < s.colors; ++c) {
      const From color = p.colors == 0 ? From{0} : loadWord<From>(from, source + p.firstColor + c);
      const To held = loadWord<To>(to, target + c);
      storeWord<To>(to, target + c,
                    straight ? straightOver<From, To>(color, alpha, held)
                             : premultipliedOver<From, To>(color, alpha, held));
    }
    if (s.alpha == AlphaKind::none) continue;
    const To held = loadWord<To>(to, target + s.alphaIndex);
    storeWord<To>(to, target + s.alphaIndex, premultipliedOver<From, To>(alpha, alpha, held));
  }
}

/// Bytes in threes or fours to bytes in fours: by far the most frequent copy.
template <std::size_t stride>
OSTRA_VECTORISED void copyBytesOpaque(const std::uint8_t* __restrict from, std::uint8_t* __restrict to,
                                      std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    to[4 * i] = from[stride * i];
    to[4 * i + 1] = from[stride * i + 1];
    to[4 * i + 2] = from[stride * i + 2];
    to[4 * i + 3] = 255;
  }
}

/// N / 255, rounded, for N up to 255·255.
std::uint32_t by255(std::uint32_t n) { return (n + 128 + ((n + 128) >> 8)) >> 8; }

/// RGBA bytes over RGB bytes with a fourth, a word a pixel: what `copyOver` says, three times as fast.
template <bool straight, bool keepsAlpha>
OSTRA_VECTORISED void copyBytesOver(const std::uint8_t* __restrict from, std::uint8_t* __restrict to,
                                    std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const auto pixel = loadWord<std::uint32_t>(from, i), held = loadWord<std::uint32_t>(to, i);
    const std::uint32_t alpha = pixel >> 24;
    std::uint32_t result = 0;
    for (std::uint32_t shift = 0; shift < 24; shift += 8) {
      const std::uint32_t color = pixel >> shift & 255, bounded = color < alpha ? color : alpha;
      const std::uint32_t drawn = straight ? color * alpha : bounded * 255;
      result |= by255(drawn + (held >> shift & 255) * (255 - alpha)) << shift;
    }
    const std::uint32_t fourth = keepsAlpha ? by255(alpha * 255 + (held >> 24) * (255 - alpha)) : held >> 24;
    storeWord<std::uint32_t>(to, i, result | fourth << 24);
  }
}

void drawBytesOver(bool straight, bool keepsAlpha, const std::uint8_t* from, std::uint8_t* to,
                   std::size_t count) {
  if (straight && keepsAlpha) return copyBytesOver<true, true>(from, to, count);
  if (straight) return copyBytesOver<true, false>(from, to, count);
  if (keepsAlpha) return copyBytesOver<false, true>(from, to, count);
  copyBytesOver<false, false>(from, to, count);
}

template <class From, class To>
void draw(const PixelFormat& p, const std::uint8_t* from, const PixelFormat& s, std::uint8_t* to,
          std::size_t count) {
  const bool usual = sizeof(From) == 1 && sizeof(To) == 1 && p.colors == 3 && p.firstColor == 0;
  if (usual && p.alpha != AlphaKind::none)
    return drawBytesOver(p.alpha == AlphaKind::straight, s.alpha != AlphaKind::none, from, to, count);
  if (p.alpha != AlphaKind::none) return copyOver<From, To>(p, from, s, to, count);
  if (usual && p.componentsPerPixel == 3) return copyBytesOpaque<3>(from, to, count);
  if (usual && p.componentsPerPixel == 4) return copyBytesOpaque<4>(from, to, count);
  copyOpaque<From, To>(p, from, s, to, count);
}

}  // namespace

void drawSameSpace(const PixelFormat& picture, const std::uint8_t* from, const PixelFormat& surface,
                   std::uint8_t* to, std::size_t count) {
  const bool fromBytes = picture.bytesPerComponent == 1, toBytes = surface.bytesPerComponent == 1;
  if (fromBytes && toBytes) return draw<std::uint8_t, std::uint8_t>(picture, from, surface, to, count);
  if (fromBytes) return draw<std::uint8_t, std::uint16_t>(picture, from, surface, to, count);
  if (toBytes) return draw<std::uint16_t, std::uint8_t>(picture, from, surface, to, count);
  draw<std::uint16_t, std::uint16_t>(picture, from, surface, to, count);
}

}  // namespace ostra
