#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/bytes.h"

namespace ostra {

/// A line of the header: a comment has no name.
struct HdrLine {
  std::string name, text;
};

struct HdrHeader {
  std::uint32_t width = 0, height = 0;
  bool isXyz = false;
  /// How scanlines lie: along columns instead of rows, and whether they and what is in them begin at the
  /// right or at the bottom.
  bool alongColumns = false, fromRight = false, fromBottom = false;
  /// Red, green, blue, white as x, y pairs.
  std::optional<std::array<double, 8>> primaries;
  ByteView lines;   // all lines before the empty one
  ByteView pixels;  // behind the header

  std::uint32_t scanlines() const { return alongColumns ? width : height; }
  std::uint32_t scanlineLength() const { return alongColumns ? height : width; }
};

/// Nothing when the header is malformed, or tells another kind of pixels.
std::optional<HdrHeader> readHdrHeader(ByteView file);
/// Comments, and lines of the form NAME=text.
std::vector<HdrLine> hdrLines(const HdrHeader& header);

}  // namespace ostra
