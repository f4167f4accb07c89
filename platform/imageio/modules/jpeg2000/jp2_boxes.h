#pragma once
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/foundation/bytes.h"
#include "platform/imageio/metadata/carrier.h"

namespace ostra {

/// How colours are told (colr).
struct Jp2Colour {
  unsigned method = 0;
  int precedence = 0;
  ByteView content;
};

/// What a channel is (cdef).
struct Jp2Definition {
  unsigned channel = 0, type = 0, association = 0;
};

/// Where a channel comes from (cmap): a component, or what a column of the palette has for its values.
struct Jp2Mapping {
  unsigned component = 0;
  std::optional<unsigned> column;
};

/// Columns of values (pclr), row by row.
struct Jp2Palette {
  std::vector<unsigned> bits;
  std::vector<bool> isSigned;
  std::vector<std::uint32_t> values;
  std::size_t entries() const { return bits.empty() ? 0 : values.size() / bits.size(); }
};

/// What the boxes of a file say.
struct Jp2Boxes {
  ByteView codestream;
  std::uint32_t codestreams = 0;
  std::uint32_t width = 0, height = 0, components = 0;  // 0 without a header
  std::vector<Jp2Colour> colours;
  std::vector<Jp2Definition> definitions;
  std::vector<Jp2Mapping> mappings;
  std::optional<Jp2Palette> palette;
  std::optional<Density> density;
  ByteView exif, xmp, iptc, photoshop;
};

/// Of a bare codestream nothing but that. Nothing when a box is cut off, or when one that the picture depends
/// on is malformed or missing.
std::optional<Jp2Boxes> readJp2Boxes(ByteView file);

}  // namespace ostra
