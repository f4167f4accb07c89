#pragma once
#include <cstdint>
#include <optional>
#include <vector>

#include "tests/platform/imageio/picture_files.h"

namespace ostra::test {

/// A GIF to be put together, by default a frame that fills its screen under a palette of random colours.
struct GifParts {
  std::uint32_t screenWidth = kWidth, screenHeight = kHeight;
  std::uint32_t left = 0, top = 0, width = kWidth, height = kHeight;
  unsigned bits = 8;  // of a palette entry
  bool hasPalette = true;
  bool localPalette = false;
  bool interlaced = false;
  std::optional<std::uint8_t> transparent;
  std::uint8_t aspect = 0;
  unsigned frames = 1;
  unsigned seed = 1;
  /// In front of the first frame.
  Bytes extensions;
  /// Instead of the code size and the compressed entries.
  std::optional<Bytes> data;
  /// What is under a palette of the frame's own.
  bool wrongGlobalPalette = false;
};

Bytes gifOf(const GifParts& parts);
/// Red, green, blue of each entry.
Bytes gifPalette(const GifParts& parts);
/// The entries of the frame's rows from the top, with long and short runs.
Bytes gifEntries(const GifParts& parts);
/// The canvas as it must be read: the frame on a transparent screen, wholly transparent pixels 0.
std::vector<std::uint16_t> gifCanvas(const GifParts& parts);

/// The code size and sub-blocks of compressed entries. Codes wider than the data begin with are learnt as the
/// format lays down; `withEnd` false leaves the end code out.
Bytes gifData(const Bytes& entries, unsigned bits, bool withEnd = true);
/// The same from the codes of a stream, each with its width.
struct GifCode {
  unsigned code = 0, bits = 0;
};
Bytes gifDataOfCodes(const std::vector<GifCode>& codes, unsigned codeSize);

/// Sub-blocks and their end.
Bytes gifSubBlocks(ByteView bytes);
Bytes gifExtension(std::uint8_t label, ByteView bytes);
Bytes gifApplication(std::string_view name, ByteView bytes);

/// The first frame on its screen as ImageMagick composes it; wholly transparent pixels 0.
std::vector<std::uint16_t> coalescedByImageMagick(const Bytes& file);

}  // namespace ostra::test
