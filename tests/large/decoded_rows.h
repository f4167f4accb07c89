#pragma once
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace ostra::test {

/// The rows of a picture as another program decodes it, one after another: djpeg for a JPEG, pngtopam for a
/// PNG. Samples of 16 bits have the high byte first. Throws when there is no such picture.
class DecodedRows {
 public:
  /// Alpha is left out unless it is asked for.
  DecodedRows(const std::string& path, bool withAlpha);
  ~DecodedRows();
  DecodedRows(const DecodedRows&) = delete;
  DecodedRows& operator=(const DecodedRows&) = delete;

  std::uint32_t width() const { return width_; }
  std::uint32_t height() const { return height_; }
  unsigned samples() const { return samples_; }
  unsigned bits() const { return bits_; }
  void readRow(std::vector<std::uint8_t>& row);
  /// Whether nothing is left and the program was content.
  bool endWell();

 private:
  void readHead();

  std::FILE* output_;
  std::uint32_t width_ = 0, height_ = 0;
  unsigned samples_ = 0, bits_ = 0;
};

}  // namespace ostra::test
