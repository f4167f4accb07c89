#pragma once
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/imageio/codec_door.h"

namespace ostra::test {

/// Lays out TIFF files byte by byte, sound ones and others, without any library: each directory first, then
/// its values, then its pixels in one strip.
class TiffBuilder {
 public:
  explicit TiffBuilder(bool bigEndian = false, bool big = false) : bigEndian_(bigEndian), big_(big) {}

  struct Entry {
    std::uint16_t tag = 0, type = 0;
    std::uint64_t count = 0;
    Bytes value;
  };
  struct Directory {
    std::vector<Entry> entries;
    Bytes pixels = {};
    std::vector<Directory> below = {};  // under SubIFDs
  };

  Entry shorts(std::uint16_t tag, const std::vector<std::uint16_t>& numbers) const;
  Entry longs(std::uint16_t tag, const std::vector<std::uint32_t>& numbers) const;
  Entry bytes(std::uint16_t tag, std::uint16_t type, ByteView value) const;
  /// What every picture has; more entries and pixels are the caller's.
  Directory picture(std::uint32_t width, std::uint32_t height, std::uint16_t bits, std::uint16_t samples,
                    std::uint16_t photometry, Bytes pixels) const;

  /// The chain; after the last comes the one of the index `loopTo`, if any.
  Bytes build(const std::vector<Directory>& chain, int loopTo = -1) const;

  Bytes number(std::uint64_t value, std::size_t size) const;

 private:
  std::size_t layDown(Bytes& file, const Directory& directory) const;
  std::size_t word() const { return big_ ? 8 : 4; }
  bool bigEndian_, big_;
};

/// A directory with another entry in the place of that of the same tag, or beside the others.
TiffBuilder::Directory with(TiffBuilder::Directory directory, TiffBuilder::Entry entry);

/// Numbers of so many bits each, packed from the highest bit on, rows filled up to bytes.
Bytes packedBits(const std::vector<std::uint64_t>& numbers, unsigned bits, std::size_t aRow);

/// Samples with straight alpha, whatever alpha the pixels have, as 16-bit RGBA.
std::vector<std::uint16_t> straightRgba16(const Pixels& pixels);

/// The first colour of each pixel, of 16 bits.
std::vector<std::uint16_t> grayOf(const Pixels& pixels);

}  // namespace ostra::test
