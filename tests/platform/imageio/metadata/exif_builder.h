#pragma once
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/foundation/bytes.h"

namespace ostra::test {

/// Lays out Exif blocks byte by byte, sound ones and others, without any of the code under test.
class ExifBuilder {
 public:
  explicit ExifBuilder(bool bigEndian) : big_(bigEndian) {}

  struct Entry {
    std::uint16_t tag = 0, type = 0;
    std::uint32_t count = 0;
    Bytes value;
    std::vector<Entry> directory;  // a pointer to these when not empty
  };
  Entry text(std::uint16_t tag, std::string_view words) const;
  Entry shorts(std::uint16_t tag, const std::vector<std::uint16_t>& values) const;
  Entry longs(std::uint16_t tag, const std::vector<std::uint32_t>& values) const;
  Entry rationals(std::uint16_t tag, const std::vector<std::pair<std::uint32_t, std::uint32_t>>& values,
                  bool hasSign = false) const;
  Entry bytes(std::uint16_t tag, std::uint16_t type, const Bytes& values) const;
  Entry directory(std::uint16_t tag, const std::vector<Entry>& entries) const;

  /// Header, directories with their values behind them, and the thumbnail's directory and data last.
  Bytes build(const std::vector<Entry>& entries, const Bytes& thumbnail = {}) const;

  Bytes number(std::uint32_t value, std::size_t size) const;
  void put(Bytes& block, std::size_t at, std::uint32_t value, std::size_t size) const;

 private:
  std::size_t layDown(Bytes& block, const std::vector<Entry>& entries) const;
  bool big_;
};

/// A camera's block: names, resolution, a maker note whose inner offset is counted from the start of the
/// block, an unknown tag, interoperability, a place, a thumbnail.
Bytes cameraBlock(bool bigEndian);
/// The maker note in it.
Bytes makerNoteOf(const Bytes& block);

/// Where a pattern begins; npos (-1) when it does not occur.
std::size_t positionOf(const Bytes& block, std::string_view pattern);
/// The places where two blocks of one size differ.
std::vector<std::size_t> differences(const Bytes& a, const Bytes& b);

}  // namespace ostra::test
