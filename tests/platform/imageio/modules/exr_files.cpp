#include "tests/platform/imageio/modules/exr_files.h"

#include <algorithm>
#include <cstring>

#include <ImfChannelList.h>
#include <ImfDeepFrameBuffer.h>
#include <ImfDeepScanLineOutputFile.h>
#include <ImfFrameBuffer.h>
#include <ImfIO.h>
#include <ImfMultiPartOutputFile.h>
#include <ImfOutputPart.h>
#include <ImfPartType.h>
#include <ImfRgbaFile.h>
#include <ImfTiledOutputPart.h>

namespace ostra::test {
namespace {

class Memory : public Imf::OStream {
 public:
  Memory() : OStream("memory") {}
  void write(const char* from, int size) override {
    const std::size_t end = position_ + static_cast<std::size_t>(size);
    if (bytes_.size() < end) bytes_.resize(end);
    std::copy_n(from, size, bytes_.begin() + static_cast<std::ptrdiff_t>(position_));
    position_ = end;
  }
  std::uint64_t tellp() override { return position_; }
  void seekp(std::uint64_t position) override { position_ = position; }
  Bytes take() { return std::move(bytes_); }

 private:
  Bytes bytes_;
  std::size_t position_ = 0;
};

Imf::Header headerOf(const ExrParts& parts) {
  Imf::Header header(parts.display, parts.data, 1, Imath::V2f(0, 0), 1, parts.order, parts.compression);
  for (const ExrChannelParts& channel : parts.channels)
    header.channels().insert(channel.name, Imf::Channel(channel.type, channel.sampling, channel.sampling));
  header.setType(parts.tile == 0 ? Imf::SCANLINEIMAGE : Imf::TILEDIMAGE);
  if (parts.tile != 0)
    header.setTileDescription(Imf::TileDescription(parts.tile, parts.tile, Imf::MIPMAP_LEVELS));
  if (parts.more) parts.more(header);
  return header;
}

/// The channels of a level in memory. Those of smaller levels are not the picture's.
class Samples {
 public:
  Samples(const ExrParts& parts, int level) {
    const int width = parts.data.max.x - parts.data.min.x + 1,
              height = parts.data.max.y - parts.data.min.y + 1;
    words_.resize(parts.channels.size());
    for (std::size_t c = 0; c < parts.channels.size(); ++c) {
      const ExrChannelParts& channel = parts.channels[c];
      std::vector<std::uint32_t>& words = words_[c];
      const std::size_t across = static_cast<std::size_t>(width / channel.sampling);
      for (int y = 0; y < height / channel.sampling; ++y) {
        for (int x = 0; x < width / channel.sampling; ++x)
          words.push_back(wordOf(channel, level == 0 ? channel.light(x, y) : 0.25F));
      }
      char* const base = reinterpret_cast<char*>(words.data()) -
                         4 * (parts.data.min.x / channel.sampling +
                              static_cast<std::ptrdiff_t>(across) * (parts.data.min.y / channel.sampling));
      buffer.insert(channel.name,
                    Imf::Slice(channel.type, base, 4, 4 * across, channel.sampling, channel.sampling));
    }
  }
  Imf::FrameBuffer buffer;

 private:
  static std::uint32_t wordOf(const ExrChannelParts& channel, float light) {
    if (channel.type == Imf::HALF) return half(light).bits();
    if (channel.type == Imf::UINT) return static_cast<std::uint32_t>(light);
    std::uint32_t word = 0;
    std::memcpy(&word, &light, sizeof word);
    return word;
  }
  std::vector<std::vector<std::uint32_t>> words_;
};

void writePart(Imf::MultiPartOutputFile& file, int number, const ExrParts& parts) {
  if (parts.tile == 0) {
    Imf::OutputPart part(file, number);
    const Samples samples(parts, 0);
    part.setFrameBuffer(samples.buffer);
    part.writePixels(parts.data.max.y - parts.data.min.y + 1);
    return;
  }
  Imf::TiledOutputPart part(file, number);
  for (int level = 0; level < part.numLevels(); ++level) {
    const Samples samples(parts, level);
    part.setFrameBuffer(samples.buffer);
    part.writeTiles(0, part.numXTiles(level) - 1, 0, part.numYTiles(level) - 1, level);
  }
}

}  // namespace

Imath::Box2i exrWindow(int x, int y, int width, int height) {
  return {Imath::V2i(x, y), Imath::V2i(x + width - 1, y + height - 1)};
}

ExrParts exrParts(int width, int height, std::vector<ExrChannelParts> channels) {
  return {.data = exrWindow(0, 0, width, height),
          .display = exrWindow(0, 0, width, height),
          .channels = std::move(channels)};
}

Bytes exrFile(const ExrParts& parts) { return exrFileOfParts({parts}); }

Bytes exrFileOfParts(const std::vector<ExrParts>& parts) {
  Memory memory;
  {
    std::vector<Imf::Header> headers;
    for (const ExrParts& part : parts) {
      headers.push_back(headerOf(part));
      if (parts.size() > 1) headers.back().setName(std::to_string(headers.size()));
    }
    Imf::MultiPartOutputFile file(memory, headers.data(), static_cast<int>(headers.size()));
    for (std::size_t i = 0; i < parts.size(); ++i) writePart(file, static_cast<int>(i), parts[i]);
  }
  return memory.take();
}

Bytes deepExrFile(int width, int height) {
  Memory memory;
  {
    Imf::Header header(width, height);
    header.channels().insert("R", Imf::Channel(Imf::HALF));
    header.setType(Imf::DEEPSCANLINE);
    header.compression() = Imf::ZIPS_COMPRESSION;
    Imf::DeepScanLineOutputFile file(memory, header);
    std::vector<unsigned> counts(static_cast<std::size_t>(width * height));
    std::vector<void*> samples(counts.size());
    const auto across = static_cast<std::size_t>(width);
    Imf::DeepFrameBuffer buffer;
    buffer.insertSampleCountSlice(Imf::Slice(Imf::UINT, reinterpret_cast<char*>(counts.data()),
                                             sizeof(unsigned), sizeof(unsigned) * across));
    buffer.insert("R", Imf::DeepSlice(Imf::HALF, reinterpret_cast<char*>(samples.data()), sizeof(void*),
                                      sizeof(void*) * across, 2));
    file.setFrameBuffer(buffer);
    file.writePixels(height);
  }
  return memory.take();
}

Bytes chromaExrFile(int width, int height, float red, float green, float blue) {
  Memory memory;
  {
    Imf::RgbaOutputFile file(memory, Imf::Header(width, height), Imf::WRITE_YC);
    file.setYCRounding(10, 10);
    const std::vector<Imf::Rgba> pixels(static_cast<std::size_t>(width * height),
                                        Imf::Rgba(red, green, blue));
    file.setFrameBuffer(pixels.data(), 1, static_cast<std::size_t>(width));
    file.writePixels(height);
  }
  return memory.take();
}

}  // namespace ostra::test
