#pragma once
#include <memory>
#include <vector>

#include "platform/imageio/modules/exr/exr_channels.h"
#include "platform/imageio/modules/exr/exr_file.h"

namespace ostra {

/// The light of the pixels of a row, from the left edge of the data window to its right one. Luminance alone
/// is red.
struct ExrRow {
  explicit ExrRow(std::size_t width) : red(width), green(width), blue(width), alpha(width, 1.F) {}
  std::vector<float> red, green, blue, alpha;
};

/// Reads the rows of the first part, wherever they lie in the file.
class ExrRows {
 public:
  virtual ~ExrRows() = default;
  /// `y` lies in the data window. Throws where the file is damaged.
  virtual void read(int y, ExrRow& row) = 0;

  static std::unique_ptr<ExrRows> of(ExrFile& file, const ExrChannels& channels);
  /// What the library takes beside the picture, in bytes; the most that can be said where it is past that.
  static std::uint64_t memoryFor(const Imf::Header& header);
};

}  // namespace ostra
