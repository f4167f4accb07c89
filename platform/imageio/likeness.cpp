#include "platform/imageio/likeness.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "platform/imageio/straight_rows.h"

namespace ostra {
namespace {

constexpr std::uint32_t kBlock = 64;
constexpr std::size_t kMostColours = 4;
constexpr double kMostDifference = 1.0 / 8;

/// Sums over a block: of the colours, each times its opacity, and of the opacity, 0 to 1 each.
using Sums = std::array<double, kMostColours + 1>;

std::size_t coloursOf(CGColorSpaceModel model) {
  if (model == CGColorSpaceModel::monochrome) return 1;
  return model == CGColorSpaceModel::cmyk ? 4 : 3;
}

/// The sums of a row of blocks.
class BlockSums {
 public:
  explicit BlockSums(const Pixels& pixels) : layout_(pixels.layout), rows_(pixels) {}

  /// Of the rows from `top` on.
  const std::vector<Sums>& sumsFrom(std::uint32_t top) {
    sums_.assign((layout_.width + kBlock - 1) / kBlock, Sums{});
    for (std::uint32_t y = top; y < std::min(top + kBlock, layout_.height); ++y) {
      if (layout_.bitsPerComponent == 16) {
        addRow<std::uint16_t>(rows_.row(y));
      } else {
        addRow<std::uint8_t>(rows_.row(y));
      }
    }
    return sums_;
  }

 private:
  template <class Sample>
  void addRow(const std::uint8_t* row) {
    constexpr double kFull = static_cast<Sample>(~Sample{0});
    const std::size_t colours = coloursOf(layout_.model),
                      samples = layout_.bitsPerPixel / (8 * sizeof(Sample));
    std::array<Sample, kMostColours + 1> pixel{};
    for (std::uint32_t x = 0; x < layout_.width; ++x, row += samples * sizeof(Sample)) {
      std::memcpy(pixel.data(), row, samples * sizeof(Sample));
      Sums& sums = sums_[x / kBlock];
      const double opacity = rows_.alpha() == CGImageAlphaInfo::last ? pixel[colours] / kFull : 1;
      for (std::size_t c = 0; c < colours; ++c) sums[c] += pixel[c] / kFull * opacity;
      sums[kMostColours] += opacity;
    }
  }

  const Layout& layout_;
  StraightRows rows_;
  std::vector<Sums> sums_;
};

bool areAlike(const Sums& one, const Sums& other, double pixels) {
  return std::equal(one.begin(), one.end(), other.begin(),
                    [pixels](double a, double b) { return std::abs(a - b) <= kMostDifference * pixels; });
}

}  // namespace

bool areAlike(const Pixels& one, const Pixels& other) {
  const Layout &a = one.layout, &b = other.layout;
  if (a.width != b.width || a.height != b.height || a.model != b.model) return false;
  BlockSums ones(one), others(other);
  for (std::uint32_t top = 0; top < a.height; top += kBlock) {
    const auto& left = ones.sumsFrom(top);
    const auto& right = others.sumsFrom(top);
    const std::uint32_t rows = std::min(kBlock, a.height - top);
    for (std::size_t block = 0; block < left.size(); ++block) {
      const auto columns = std::min<std::size_t>(kBlock, a.width - block * kBlock);
      if (!areAlike(left[block], right[block], static_cast<double>(rows * columns))) return false;
    }
  }
  return true;
}

}  // namespace ostra
