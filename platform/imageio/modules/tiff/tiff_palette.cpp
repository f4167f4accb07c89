#include "platform/imageio/modules/tiff/tiff_palette.h"

#include <algorithm>

namespace ostra {

std::optional<TiffPalette> TiffPalette::read(const TiffFile& file, const TiffDirectory& directory) {
  std::array<const std::uint16_t*, 3> stored{};
  if (TIFFGetField(file.get(), TIFFTAG_COLORMAP, &stored[0], &stored[1], &stored[2]) == 0 ||
      std::find(stored.begin(), stored.end(), nullptr) != stored.end())
    return std::nullopt;
  TiffPalette palette;
  const std::size_t entries = std::size_t{1} << directory.bits;
  const auto all = [&](auto holds) {
    return std::all_of(stored.begin(), stored.end(),
                       [&](const std::uint16_t* from) { return std::all_of(from, from + entries, holds); });
  };
  // Writers mistake the depth of the palette for 8 bits, or leave the lower half of its numbers empty.
  const bool low = all([](std::uint16_t value) { return value < 256; });
  const bool high = !low && all([](std::uint16_t value) { return (value & 255) == 0; });
  palette.eightBits_ = low || high || all([](std::uint16_t value) { return value % 257 == 0; });
  for (std::size_t c = 0; c < 3; ++c) {
    palette.colours_[c].assign(stored[c], stored[c] + entries);
    for (std::uint16_t& value : palette.colours_[c]) {
      if (low || high) value = static_cast<std::uint16_t>((high ? value >> 8 : value) * 257);
    }
  }
  return palette;
}

}  // namespace ostra
