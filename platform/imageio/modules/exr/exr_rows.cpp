#include "platform/imageio/modules/exr/exr_rows.h"

#include <limits>

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfInputPart.h>
#include <ImfRgbaFile.h>
#include <ImfTileDescription.h>

namespace ostra {
namespace {

/// Channels of any type, converted by the library.
class ChannelRows : public ExrRows {
 public:
  ChannelRows(ExrFile& file, const ExrChannels& channels) : part_(file.parts(), 0), channels_(channels) {}

  void read(int y, ExrRow& row) override {
    if (row.red.data() != target_) aim(row);
    part_.readPixels(y);
  }

 private:
  // A frame buffer of one row, to which every row goes. A channel that is missing keeps what the row has.
  void aim(ExrRow& row) {
    Imf::FrameBuffer buffer;
    const auto add = [&](const char* name, std::vector<float>& values) {
      const std::string full = channels_.prefix + name;
      if (part_.header().channels().findChannel(full) == nullptr) return;
      constexpr std::ptrdiff_t kStep = sizeof(float);
      char* const base = reinterpret_cast<char*>(values.data()) - kStep * part_.header().dataWindow().min.x;
      buffer.insert(full, Imf::Slice(Imf::FLOAT, base, kStep, 0));
    };
    add(channels_.colour == ExrColour::rgb ? "R" : "Y", row.red);
    if (channels_.colour == ExrColour::rgb) {
      add("G", row.green);
      add("B", row.blue);
    }
    add("A", row.alpha);
    part_.setFrameBuffer(buffer);
    target_ = row.red.data();
  }

  Imf::InputPart part_;
  ExrChannels channels_;
  const float* target_ = nullptr;
};

/// Luminance and subsampled chroma, filtered by the library.
class ChromaRows : public ExrRows {
 public:
  ChromaRows(FileBytes bytes, const ExrChannels& channels)
      : stream_(bytes), file_(stream_, layerName(channels), 0), row_(sizeOf(file_.dataWindow()).width) {
    file_.setFrameBuffer(row_.data() - file_.dataWindow().min.x, 1, 0);
  }

  void read(int y, ExrRow& row) override {
    file_.readPixels(y);
    for (std::size_t x = 0; x < row_.size(); ++x) {
      row.red[x] = row_[x].r;
      row.green[x] = row_[x].g;
      row.blue[x] = row_[x].b;
      row.alpha[x] = row_[x].a;
    }
  }

 private:
  static std::string layerName(const ExrChannels& channels) {
    return channels.prefix.substr(0, channels.prefix.find_last_of('.'));
  }

  ExrStream stream_;
  Imf::RgbaInputFile file_;
  std::vector<Imf::Rgba> row_;
};

std::uint64_t linesOfBlock(Imf::Compression compression) {
  switch (compression) {
    case Imf::NO_COMPRESSION:
    case Imf::RLE_COMPRESSION:
    case Imf::ZIPS_COMPRESSION:
      return 1;
    case Imf::ZIP_COMPRESSION:
    case Imf::PXR24_COMPRESSION:
      return 16;
    case Imf::DWAB_COMPRESSION:
      return 256;
    default:
      return 32;
  }
}

}  // namespace

std::unique_ptr<ExrRows> ExrRows::of(ExrFile& file, const ExrChannels& channels) {
  if (channels.colour == ExrColour::luminanceAndChroma)
    return std::make_unique<ChromaRows>(file.bytes(), channels);
  return std::make_unique<ChannelRows>(file, channels);
}

// Blocks of lines, or a row of tiles and a tile, hold all channels of the file; they lie there packed,
// unpacked, and once more while a compression is undone. The filter of chroma keeps 31 rows.
std::uint64_t ExrRows::memoryFor(const Imf::Header& header) {
  std::uint64_t channels = 0;
  const Imf::ChannelList& list = header.channels();
  for (auto channel = list.begin(); channel != list.end(); ++channel) ++channels;
  const std::uint64_t width = sizeOf(header.dataWindow()).width;
  constexpr std::uint64_t kCopies = 4, kFilteredRows = 31, kMost = std::numeric_limits<std::uint64_t>::max();
  std::uint64_t lines = linesOfBlock(header.compression()), across = width;
  if (header.hasTileDescription()) {
    const Imf::TileDescription& tiles = header.tileDescription();
    lines = tiles.ySize;
    across = width + tiles.xSize;
  }
  const auto rows = checkedProduct(across, lines + kFilteredRows);
  const auto bytes = rows ? checkedProduct(*rows, kCopies * sizeof(float), channels) : std::nullopt;
  return bytes.value_or(kMost);
}

}  // namespace ostra
