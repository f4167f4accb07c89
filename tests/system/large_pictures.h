#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace ostra::test {

/// A picture of any size, known row by row: nobody needs to hold it.
struct LargePicture {
  std::uint32_t width = 0, height = 0;
  unsigned samples = 3;  // gray, gray and alpha, RGB, RGB and alpha
  unsigned bits = 8;
  bool noise = false;  // does not compress at all; else it changes softly and a little by chance
  unsigned seed = 1;

  std::uint64_t pixels() const { return std::uint64_t{width} * height; }
  /// The samples of one row, those of 16 bits with the high byte first, as PNG stores them.
  void makeRow(std::uint32_t y, std::vector<std::uint8_t>& row) const;
};

/// Written row by row. The profile may be empty.
void writeLargePng(const std::string& path, const LargePicture& picture,
                   const std::vector<std::uint8_t>& profile = {});
/// 8 bits, gray or RGB.
void writeLargeJpeg(const std::string& path, const LargePicture& picture);

}  // namespace ostra::test
