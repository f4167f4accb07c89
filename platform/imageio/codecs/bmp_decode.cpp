#include "platform/imageio/codecs/bmp_decode.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "platform/imageio/codecs/bmp_rle.h"
#include "platform/imageio/codecs/plain_pixels.h"
#include "platform/imageio/pixel_memory.h"

namespace ostra {
namespace {

// One sample of pixels that hold it under a mask.
class MaskedSample {
 public:
  MaskedSample(std::uint32_t mask, std::uint32_t full) : mask_(mask), full_(full) {
    if (mask == 0) return;
    shift_ = std::countr_zero(mask);
    most_ = mask >> shift_;
    if (most_ > 255) return;
    for (std::uint32_t value = 0; value <= most_; ++value) table_[value] = scaledSample(value, most_, full);
  }
  std::uint16_t of(std::uint32_t pixel) const {
    const std::uint32_t value = (pixel & mask_) >> shift_;
    return most_ > 255 ? scaledSample(value, most_, full_) : table_[value];
  }

 private:
  std::uint32_t mask_, full_, most_ = 0;
  int shift_ = 0;
  std::array<std::uint16_t, 256> table_{};
};

template <class Sample>
class MaskedPixels {
 public:
  explicit MaskedPixels(const BmpHeader& header)
      : bytes_(header.bits / 8), width_(header.width), alpha_(header.hasAlpha()) {
    for (const std::uint32_t mask : header.masks) samples_.emplace_back(mask, kFull);
  }
  void row(const std::uint8_t* from, std::uint8_t* to) const {
    for (std::size_t x = 0; x < width_; ++x, from += bytes_, to += 4 * sizeof(Sample)) {
      std::uint32_t pixel = from[0] | std::uint32_t{from[1]} << 8;
      if (bytes_ > 2) pixel |= std::uint32_t{from[2]} << 16;
      if (bytes_ > 3) pixel |= std::uint32_t{from[3]} << 24;
      std::array<Sample, 4> rgba;
      for (std::size_t i = 0; i < 4; ++i) rgba[i] = static_cast<Sample>(samples_[i].of(pixel));
      if (!alpha_) rgba[3] = kFull;
      std::memcpy(to, rgba.data(), sizeof rgba);
    }
  }

 private:
  static constexpr Sample kFull = static_cast<Sample>(~0U);
  std::size_t bytes_, width_;
  bool alpha_;
  std::vector<MaskedSample> samples_;
};

// Pixels smaller than a byte, the first in the highest bits.
void spreadBits(const std::uint8_t* from, unsigned bits, std::size_t width, std::uint8_t* to) {
  if (bits == 8) {
    std::copy_n(from, width, to);
    return;
  }
  const unsigned inByte = 8 / bits, mask = (1U << bits) - 1;
  for (std::size_t x = 0; x < width; ++x) {
    const unsigned shift = 8 - bits * (static_cast<unsigned>(x % inByte) + 1);
    to[x] = static_cast<std::uint8_t>(from[x / inByte] >> shift & mask);
  }
}

// False where an index has no colour.
bool colourRow(const std::vector<BmpColour>& palette, bool gray, ByteView indices, std::uint8_t* to) {
  if (*std::max_element(indices.begin(), indices.end()) >= palette.size()) return false;
  for (const std::uint8_t index : indices) {
    const BmpColour& colour = palette[index];
    if (gray) {
      *to++ = colour[0];
    } else {
      to = std::copy(colour.begin(), colour.end(), to);
      *to++ = 255;
    }
  }
  return true;
}

bool decodePacked(const BmpPicture& picture, bool gray, std::uint8_t* pixels, std::size_t bytesPerRow) {
  const BmpHeader& header = picture.header;
  const bool direct = header.packing == BmpPacking::rle24;
  BmpRleRows rows(picture.data, header);
  Bytes stored(rows.rowBytes());
  BmpHeader plain = header;
  plain.masks = {0xFF0000, 0x00FF00, 0x0000FF, 0};
  const MaskedPixels<std::uint8_t> masked(plain);
  for (std::size_t y = 0; y < header.height; ++y) {
    std::uint8_t* to = pixels + (header.topDown ? y : header.height - 1 - y) * bytesPerRow;
    if (!rows.next(stored.data())) return false;
    if (direct) {
      masked.row(stored.data(), to);
    } else if (!colourRow(picture.palette, gray, ByteView(stored).first(header.width), to)) {
      return false;
    }
  }
  return true;
}

bool decodePlain(const BmpPicture& picture, bool gray, std::uint8_t* pixels, std::size_t bytesPerRow) {
  const BmpHeader& header = picture.header;
  const std::uint64_t rowBytes = picture.rowBytes(),
                      lastRow = (std::uint64_t{header.width} * header.bits + 7) / 8;
  // The padding of the last row holds nothing.
  if (picture.data.size() < rowBytes * (header.height - 1) + lastRow) return false;
  const MaskedPixels<std::uint8_t> masked(header);
  const MaskedPixels<std::uint16_t> deep(header);
  Bytes indices(header.hasPalette() ? header.width : 0);
  for (std::size_t y = 0; y < header.height; ++y) {
    const std::uint8_t* from = picture.data.data() + y * rowBytes;
    std::uint8_t* to = pixels + (header.topDown ? y : header.height - 1 - y) * bytesPerRow;
    if (header.hasPalette()) {
      spreadBits(from, header.bits, header.width, indices.data());
      if (!colourRow(picture.palette, gray, indices, to)) return false;
    } else if (picture.decodedBits() == 16) {
      deep.row(from, to);
    } else {
      masked.row(from, to);
    }
  }
  return true;
}

}  // namespace

bool BmpPicture::hasGrayPalette() const {
  return header.hasPalette() && std::all_of(palette.begin(), palette.end(), [](const BmpColour& colour) {
           return colour[0] == colour[1] && colour[1] == colour[2];
         });
}

unsigned BmpPicture::storedBits() const {
  if (header.packing != BmpPacking::masks) return 8;
  int most = 0;
  for (const std::uint32_t mask : header.masks) most = std::max(most, std::popcount(mask));
  return static_cast<unsigned>(most);
}

unsigned BmpPicture::decodedBits() const { return storedBits() > 8 ? 16 : 8; }

std::uint64_t BmpPicture::rowBytes() const {
  return (std::uint64_t{header.width} * header.bits + 31) / 32 * 4;
}

Answer<Layout> bmpLayout(const BmpPicture& picture, CGColorSpaceModel model, const Limits& limits,
                         std::size_t fileSize) {
  const BmpHeader& header = picture.header;
  const Layout layout =
      plainLayout(header.width, header.height, picture.decodedBits(), model, header.hasAlpha());
  const LimitName limit =
      exceededLimit(limits, layout.width, layout.height, layout.bitsPerPixel / 8u, fileSize);
  if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
  return layout;
}

bool decodeBmpInto(const BmpPicture& picture, const Layout& layout, std::uint8_t* pixels) {
  const bool gray = layout.model == CGColorSpaceModel::monochrome;
  switch (picture.header.packing) {
    case BmpPacking::palette:
    case BmpPacking::masks:
      return decodePlain(picture, gray, pixels, layout.bytesPerRow);
    case BmpPacking::rle4:
    case BmpPacking::rle8:
    case BmpPacking::rle24:
      return decodePacked(picture, gray, pixels, layout.bytesPerRow);
    case BmpPacking::unknown:
      break;
  }
  return false;
}

Answer<Pixels> decodeBmpPixels(const BmpPicture& picture, CGColorSpaceModel model, const Limits& limits,
                               std::size_t fileSize) {
  auto planned = bmpLayout(picture, model, limits, fileSize);
  if (const auto* fault = std::get_if<Fault>(&planned)) return *fault;
  Layout layout = std::get<Layout>(planned);
  PixelMemory memory(layout.bytesPerRow * layout.height);
  if (!decodeBmpInto(picture, layout, memory.data())) return Fault{FaultKind::damaged};
  if (picture.header.hasAlpha()) makeOpaqueIfBlank(layout, memory.data());
  return Pixels{layout, std::move(memory).share(), Untagged{}};
}

}  // namespace ostra
