#pragma once
#include <vector>

#include "platform/imageio/codec_door.h"
#include "platform/imageio/codecs/bmp_header.h"

namespace ostra {

/// A bitmap taken apart, nothing of its pixels read.
struct BmpPicture {
  BmpHeader header;
  std::vector<BmpColour> palette;
  ByteView data;  // the stored pixels and what follows them

  bool hasGrayPalette() const;
  /// Of the decoded samples: 16 where a mask has more than 8 bits.
  unsigned decodedBits() const;
  /// The widest sample that the file stores; 8 for a palette.
  unsigned storedBits() const;
  /// What a row takes in the file, which pads it to whole double words.
  std::uint64_t rowBytes() const;
};

/// How `picture` is laid out as pixels of `model`; the limit that it breaks is a fault.
Answer<Layout> bmpLayout(const BmpPicture& picture, CGColorSpaceModel model, const Limits& limits,
                         std::size_t fileSize);
/// Fills memory of that layout. False when a row is cut off or a pixel has no colour in the palette.
bool decodeBmpInto(const BmpPicture& picture, const Layout& layout, std::uint8_t* pixels);

/// The pixels without a profile, as gray where `model` says so, which needs a palette of grays. `fileSize` is
/// what they are judged by.
Answer<Pixels> decodeBmpPixels(const BmpPicture& picture, CGColorSpaceModel model, const Limits& limits,
                               std::size_t fileSize);

}  // namespace ostra
