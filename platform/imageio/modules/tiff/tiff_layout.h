#pragma once
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/imageio/metadata/exif_structure.h"

namespace ostra {

/// An entry of a directory to be written. Its value is `value`, or lies in the file already, at `place`.
struct TiffField {
  std::uint16_t tag = 0, type = 0;
  std::uint64_t count = 0;
  Bytes value = {};
  std::optional<ByteRange> place = std::nullopt;
};

/// Lays directories down at the end of a file that is being written.
class TiffLayout {
 public:
  TiffLayout(Bytes& file, ByteOrder order, bool big) : file_(file), order_(order), big_(big) {}

  ByteOrder order() const { return order_; }
  bool isBig() const { return big_; }
  ByteView file() const { return file_; }

  TiffField shorts(std::uint16_t tag, const std::vector<std::uint16_t>& numbers) const;
  TiffField longs(std::uint16_t tag, const std::vector<std::uint32_t>& numbers) const;
  /// Places in the file: of 4 bytes, or 8 in a BigTIFF.
  TiffField places(std::uint16_t tag, const std::vector<std::uint64_t>& numbers) const;
  TiffField bytes(std::uint16_t tag, std::uint16_t type, ByteView value) const;

  /// The entries in ascending order, each tag once; where the directory lies.
  std::uint64_t layDown(std::vector<TiffField> fields);
  /// Over the beginning of the file.
  void writeHeader(std::uint64_t firstDirectory);

 private:
  void put(std::uint64_t at, std::uint64_t number, unsigned size);
  void append(Bytes& bytes, std::uint64_t number, unsigned size) const;
  unsigned word() const { return big_ ? 8 : 4; }
  void makeInline(TiffField& field) const;

  Bytes& file_;
  ByteOrder order_;
  bool big_;
};

}  // namespace ostra
