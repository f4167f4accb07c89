#pragma once
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/foundation/bytes.h"

namespace ostra {

/// A rectangle of samples, one for every `dx` by `dy` points of the codestream's grid.
struct J2kComponent {
  unsigned bits = 0;
  bool isSigned = false;
  std::uint32_t dx = 1, dy = 1;
  /// In its own samples.
  std::uint32_t left = 0, top = 0, width = 0, height = 0;
};

/// What a codestream says of itself (ISO/IEC 15444-1, annex A), nothing decoded.
struct Codestream {
  /// From its first marker to its last; what follows is none of it.
  ByteView bytes;
  std::uint32_t width = 0, height = 0;  // on the grid
  std::uint32_t tiles = 0;
  std::vector<J2kComponent> components;
  std::vector<ByteView> comments;
};

/// Nothing when the header is malformed, or when a tile, a part of one or the end is missing: the library
/// would give gray areas for them.
std::optional<Codestream> readCodestream(ByteView bytes);

}  // namespace ostra
