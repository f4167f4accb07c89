#pragma once
#include <functional>
#include <string>
#include <vector>

#include <ImfCompression.h>
#include <ImfHeader.h>
#include <ImfPixelType.h>

#include "platform/foundation/bytes.h"

namespace ostra::test {

/// The light of a channel at a place of the data window.
using ExrLight = std::function<float(int x, int y)>;

struct ExrChannelParts {
  std::string name;
  ExrLight light;
  Imf::PixelType type = Imf::HALF;
  int sampling = 1;
};

/// A part that the format's own library writes: scan lines, or tiles of that size with levels.
struct ExrParts {
  Imath::Box2i data, display;
  std::vector<ExrChannelParts> channels;
  Imf::Compression compression = Imf::ZIP_COMPRESSION;
  Imf::LineOrder order = Imf::INCREASING_Y;
  unsigned tile = 0;
  /// Further attributes.
  std::function<void(Imf::Header&)> more = {};
};

Imath::Box2i exrWindow(int x, int y, int width, int height);
/// Both windows of this size, at the origin.
ExrParts exrParts(int width, int height, std::vector<ExrChannelParts> channels);

Bytes exrFile(const ExrParts& parts);
/// One file of several parts, named by their number.
Bytes exrFileOfParts(const std::vector<ExrParts>& parts);
/// One deep part without a sample.
Bytes deepExrFile(int width, int height);
/// Luminance and chroma of a picture of one colour.
Bytes chromaExrFile(int width, int height, float red, float green, float blue);

}  // namespace ostra::test
