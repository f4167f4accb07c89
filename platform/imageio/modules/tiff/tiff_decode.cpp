#include "platform/imageio/modules/tiff/tiff_decode.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "platform/imageio/codecs/decode_clock.h"
#include "platform/imageio/modules/tiff/tiff_blocks.h"
#include "platform/imageio/modules/tiff/tiff_lab.h"
#include "platform/imageio/modules/tiff/tiff_samples.h"
#include "platform/imageio/pixel_memory.h"

namespace ostra {
namespace {

/// Alpha of ink has no place in our pixels.
bool keepsAlpha(const TiffDirectory& directory) {
  return directory.alpha != TiffAlpha::none && directory.colour != TiffColour::cmyk &&
         directory.colour != TiffColour::other;
}

CGImageAlphaInfo alphaInfoOf(const TiffDirectory& directory) {
  if (keepsAlpha(directory))
    return directory.alpha == TiffAlpha::straight ? CGImageAlphaInfo::last
                                                  : CGImageAlphaInfo::premultipliedLast;
  return directory.model() == CGColorSpaceModel::rgb ? CGImageAlphaInfo::noneSkipLast
                                                     : CGImageAlphaInfo::none;
}

Layout decodedLayout(const TiffDirectory& directory) {
  Layout layout;
  layout.width = directory.width;
  layout.height = directory.height;
  layout.bitsPerComponent = directory.decodedBits();
  layout.model = directory.model();
  const bool gray = layout.model == CGColorSpaceModel::monochrome;
  const unsigned components = gray ? (keepsAlpha(directory) ? 2 : 1) : 4;
  layout.bitsPerPixel = static_cast<std::uint8_t>(components * layout.bitsPerComponent);
  layout.bytesPerRow = std::size_t{layout.width} * (layout.bitsPerPixel / 8u);
  layout.bitmapInfo = static_cast<CGBitmapInfo>(alphaInfoOf(directory)) |
                      (layout.bitsPerComponent == 16 ? kCGBitmapByteOrder16Little : 0);
  return layout;
}

/// Turns the samples of rows into pixels.
class RowWriter {
 public:
  RowWriter(const TiffFile& file, const TiffDirectory& directory, const Layout& layout)
      : directory_(directory),
        layout_(layout),
        samples_(directory.bits, directory.format),
        row_(std::size_t{directory.width} * directory.samples),
        components_(layout.bitsPerPixel / layout.bitsPerComponent) {
    if (directory.colour == TiffColour::palette)
      TIFFGetField(file.get(), TIFFTAG_COLORMAP, &palette_[0], &palette_[1], &palette_[2]);
  }

  bool hasWhatItNeeds() const {
    if (directory_.colour != TiffColour::palette) return true;
    return directory_.bits <= 16 && directory_.format == SAMPLEFORMAT_UINT && palette_[0] != nullptr &&
           palette_[1] != nullptr && palette_[2] != nullptr;
  }

  void collect(const TiffBlock& block, std::uint32_t rowInBlock) {
    const std::uint32_t pixels = std::min(block.width, directory_.width - block.x);
    unpacked_.resize(std::size_t{pixels} * block.samples);
    const std::uint8_t* const row = block.bytes.data() + rowInBlock * block.bytesPerRow;
    if (directory_.colour == TiffColour::palette) {
      TiffSamples::unpackNumbers(row, unpacked_, directory_.bits);
    } else {
      samples_.unpack(row, unpacked_);
    }
    const std::size_t stride = directory_.samples;
    std::uint16_t* to = row_.data() + block.x * stride + block.firstSample;
    if (block.samples == stride) {
      std::copy(unpacked_.begin(), unpacked_.end(), to);
    } else {
      for (std::size_t i = 0; i < pixels; ++i) to[i * stride] = unpacked_[i];
    }
  }

  void write(std::uint8_t* to) const {
    for (std::uint32_t x = 0; x < directory_.width; ++x, to += layout_.bitsPerPixel / 8u) {
      std::array<std::uint16_t, 4> pixel{0, 0, 0, 0xFFFF};
      const std::uint16_t* const from = row_.data() + std::size_t{x} * directory_.samples;
      readColour(from, pixel);
      if (keepsAlpha(directory_)) pixel[components_ - 1] = from[directory_.alphaSample];
      put(pixel, to);
    }
  }

 private:
  void readColour(const std::uint16_t* from, std::array<std::uint16_t, 4>& pixel) const {
    switch (directory_.colour) {
      case TiffColour::gray:
        pixel[0] = directory_.whiteIsZero ? static_cast<std::uint16_t>(0xFFFF - from[0]) : from[0];
        break;
      case TiffColour::palette:
        for (std::size_t c = 0; c < 3; ++c) pixel[c] = palette_[c][from[0]];
        break;
      case TiffColour::lab:
        labToROMM(from, {directory_.bits == 8, directory_.labOfProfiles}, pixel);
        break;
      default:
        std::copy_n(from, directory_.colours(), pixel.begin());
    }
  }

  void put(const std::array<std::uint16_t, 4>& pixel, std::uint8_t* to) const {
    if (layout_.bitsPerComponent == 16) {
      std::memcpy(to, pixel.data(), components_ * 2);
    } else {
      for (std::size_t c = 0; c < components_; ++c)
        to[c] = static_cast<std::uint8_t>((pixel[c] + 128u) / 257u);
    }
  }

  const TiffDirectory& directory_;
  const Layout& layout_;
  TiffSamples samples_;
  std::vector<std::uint16_t> row_, unpacked_;
  std::array<const std::uint16_t*, 3> palette_{};
  std::size_t components_;
};

/// A fault, or nothing when all is well.
std::optional<Fault> decodeBands(const TiffFile& file, const TiffDirectory& directory, const Layout& layout,
                                 std::uint8_t* to, std::uint32_t seconds) {
  TiffBands bands(file, directory);
  RowWriter writer(file, directory, layout);
  if (!writer.hasWhatItNeeds()) return Fault{FaultKind::damaged};
  const DecodeClock clock(seconds);
  while (true) {
    const auto rows = bands.next();
    if (!rows) return Fault{FaultKind::damaged};
    if (*rows == 0) return std::nullopt;
    for (std::uint32_t row = 0; row < *rows; ++row, to += layout.bytesPerRow) {
      for (const TiffBlock& block : bands.blocks()) writer.collect(block, row);
      writer.write(to);
    }
    if (clock.isOver()) return Fault{FaultKind::limit, LimitName::seconds};
  }
}

/// Subsampled and logarithmic colours, and old JPEG: the library's own conversion to 8 bits.
std::optional<Fault> decodeByLibrary(const TiffFile& file, const TiffDirectory& directory, std::uint8_t* to) {
  TIFFSetField(file.get(), TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);  // as they are stored
  auto* const raster = reinterpret_cast<std::uint32_t*>(to);
  const bool done = TIFFReadRGBAImageOriented(file.get(), directory.width, directory.height, raster,
                                              ORIENTATION_TOPLEFT, 1) != 0;
  return done ? std::nullopt : std::optional(Fault{FaultKind::damaged});
}

}  // namespace

Answer<Pixels> decodeTiffPixels(const TiffFile& file, const TiffDirectory& directory, const Limits& limits) {
  const Layout layout = decodedLayout(directory);
  const bool byLibrary = directory.colour == TiffColour::other;
  if (directory.compression == COMPRESSION_JPEG && !byLibrary)
    TIFFSetField(file.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  const LimitName limit =
      exceededLimit(limits, layout.width, layout.height, layout.bitsPerPixel / 8u, file.bytes().size());
  if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
  if (TiffBands(file, directory).bytes() > limits.decodedBytes)
    return Fault{FaultKind::limit, LimitName::decodedBytes};

  PixelMemory memory(layout.bytesPerRow * layout.height);
  const unsigned before = file.complaints();
  const auto fault = byLibrary ? decodeByLibrary(file, directory, memory.data())
                               : decodeBands(file, directory, layout, memory.data(), limits.seconds);
  if (fault) return *fault;
  if (file.complaints() != before) return Fault{FaultKind::damaged};
  Pixels pixels{layout, std::move(memory).share(), Untagged{}};
  if (directory.colour == TiffColour::lab) pixels.profile = NamedSpace{std::string(kCGColorSpaceROMMRGB)};
  return pixels;
}

}  // namespace ostra
