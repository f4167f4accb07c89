#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/foundation/bytes.h"

namespace ostra {

inline constexpr std::size_t kTgaHeaderSize = 18;

enum class TgaKind { map = 1, rgb = 2, gray = 3 };
/// What the fourth component of a pixel is.
enum class TgaAlpha { none, straight, premultiplied };

/// The header, whose fields make sense together, and what the end of the file adds to it.
struct TgaHeader {
  TgaKind kind = TgaKind::rgb;
  bool isPacked = false;
  std::uint32_t width = 0, height = 0;
  unsigned bits = 0;  // of a stored pixel
  bool topDown = false, rightToLeft = false;
  std::uint32_t mapFirst = 0, mapLength = 0;
  unsigned mapBits = 0;
  std::size_t mapAt = 0, dataAt = 0;
  TgaAlpha alpha = TgaAlpha::none;

  std::size_t pixelBytes() const { return (bits + 7) / 8; }
};

/// Nothing when it is none: text, zeros and other formats are not taken for one.
std::optional<TgaHeader> readTgaHeader(ByteView head);
/// The header with what the extension area says of the alpha, where the file has one.
TgaHeader withTgaExtension(TgaHeader header, ByteView file);

}  // namespace ostra
