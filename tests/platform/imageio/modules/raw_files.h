#pragma once
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/imageio/metadata/exif_structure.h"

namespace ostra::test {

/// A directory of a TIFF file whose every number the test chooses. A pointer to directories below is an entry
/// too.
struct TiffParts {
  struct Entry {
    std::uint16_t tag = 0;
    ExifType type = kShort;
    std::uint32_t count = 0;
    Bytes value;
  };
  explicit TiffParts(ByteOrder byteOrder) : order(byteOrder) {}

  void shorts(std::uint16_t tag, const std::vector<unsigned>& values);
  void longs(std::uint16_t tag, const std::vector<std::uint32_t>& values);
  /// In millionths.
  void rationals(std::uint16_t tag, const std::vector<double>& values, ExifType type = kRational);
  void text(std::uint16_t tag, std::string_view text);
  void bytes(std::uint16_t tag, const Bytes& bytes, ExifType type = kByte);

  ByteOrder order;
  std::vector<Entry> entries;
  /// Directories that the entry of this tag points at.
  std::vector<std::pair<std::uint16_t, std::vector<TiffParts>>> below;
  /// Rows of pixels, a strip each.
  std::vector<Bytes> strips;
};
/// The chain of directories as a file, strips behind each other at its end.
Bytes tiffFile(const std::vector<TiffParts>& chain);

/// A raw picture. Values are those of the sensor.
struct DngParts {
  ByteOrder order = ByteOrder::little;
  unsigned width = 48, height = 34;
  unsigned bits = 16;
  /// Of the mosaic of 2 by 2 or 6 by 6, row by row: 0 red, 1 green, 2 blue. None: all three of each pixel;
  /// one: a gray sensor.
  std::vector<std::uint8_t> pattern = {0, 1, 1, 2};
  std::function<unsigned(unsigned x, unsigned y, unsigned colour)> value = [](unsigned, unsigned, unsigned) {
    return 30000U;
  };
  unsigned white = 65535, black = 0;
  unsigned orientation = 1;
  unsigned rowsOfStrip = 10;
  std::vector<double> neutral = {1, 1, 1};
  /// From XYZ to the camera's colours: those of sRGB.
  std::vector<double> matrix = {3.2404542, -1.5371385, -0.4985314, -0.969266, 1.8760108,
                                0.041556,  0.0556434,  -0.2040259, 1.0572252};
  std::string make = "Ostra", model = "Test Camera";
  bool isDng = true;
  /// By lossless JPEG, in one strip.
  bool isCompressed = false;
  /// The raw pixels lie in a directory below that of a preview.
  bool hasPreview = false;
  std::function<void(TiffParts& first)> more = {};
  std::function<void(TiffParts& raw)> moreRaw = {};
};
Bytes dngFile(const DngParts& parts);

/// A Minolta's file: 12 bits, packed, behind a head that holds a TIFF block. Its sensor sees a gray wave.
Bytes mrwFile(unsigned width, unsigned height);

}  // namespace ostra::test
