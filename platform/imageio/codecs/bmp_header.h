#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/foundation/bytes.h"

namespace ostra {

enum class BmpPacking { palette, masks, rle4, rle8, rle24, unknown };

/// The header of a bitmap, wherever that lies: in a file of its own or in an icon. The numbers of rows and
/// columns are not 0.
struct BmpHeader {
  std::uint32_t size = 0;
  std::uint32_t width = 0, height = 0;
  bool topDown = false;
  unsigned bits = 0;  // of a stored pixel
  BmpPacking packing = BmpPacking::unknown;
  std::array<std::uint32_t, 4> masks{};  // red, green, blue, alpha; without a palette
  /// Behind the header, from its first byte on.
  std::size_t paletteAt = 0;
  std::size_t paletteEntries = 0;
  std::size_t paletteEntryBytes = 4;
  /// Dots a metre; 0 where it tells none.
  std::uint32_t xDensity = 0, yDensity = 0;

  bool hasPalette() const { return bits <= 8; }
  bool hasAlpha() const { return packing == BmpPacking::masks && masks[3] != 0; }
};

/// Whether a bitmap header can have this size.
bool isBmpHeaderSize(std::uint32_t size);
/// The header at the beginning of `bitmap`; nothing when it is cut off or makes no sense.
std::optional<BmpHeader> readBmpHeader(ByteView bitmap);

/// Red, green, blue.
using BmpColour = std::array<std::uint8_t, 3>;
/// As many colours as there are between the header and `end`, and no more than the pixels can name.
std::vector<BmpColour> readBmpPalette(ByteView bitmap, const BmpHeader& header, std::size_t end);

}  // namespace ostra
