#pragma once
#include <array>
#include <vector>

#include "platform/imageio/modules/tiff/tiff_directory.h"

namespace ostra {

/// The colours that a picture of entries refers to, 16 bits a component.
class TiffPalette {
 public:
  /// Nothing when the directory has none.
  static std::optional<TiffPalette> read(const TiffFile& file, const TiffDirectory& directory);

  std::array<std::uint16_t, 3> at(std::uint16_t entry) const {
    return {colours_[0][entry], colours_[1][entry], colours_[2][entry]};
  }
  /// Whether 8 bits hold all of it.
  bool isEightBits() const { return eightBits_; }

 private:
  std::array<std::vector<std::uint16_t>, 3> colours_;
  bool eightBits_ = false;
};

}  // namespace ostra
