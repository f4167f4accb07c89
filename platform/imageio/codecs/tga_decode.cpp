#include "platform/imageio/codecs/tga_decode.h"

#include <algorithm>

#include "platform/imageio/codecs/little_endian.h"
#include "platform/imageio/codecs/plain_pixels.h"
#include "platform/imageio/pixel_memory.h"

namespace ostra {
namespace {

// The stored pixels, row by row. A run may go on in the next row, as in version 1 of the format.
class TgaRows {
 public:
  explicit TgaRows(const TgaPicture& picture)
      : data_(picture.data),
        packed_(picture.header.isPacked),
        pixelBytes_(picture.header.pixelBytes()),
        width_(picture.header.width) {}

  // False when the file ends before the row does.
  bool next(std::uint8_t* row) {
    const std::size_t size = width_ * pixelBytes_;
    for (std::size_t done = 0; done < size;) {
      if (!packed_) left_ = width_;
      if (left_ == 0 && !readHead()) return false;
      const std::size_t pixels = std::min(left_, (size - done) / pixelBytes_), bytes = pixels * pixelBytes_;
      if (repeated_ != nullptr) {
        for (std::size_t i = 0; i < pixels; ++i)
          std::copy_n(repeated_, pixelBytes_, row + done + i * pixelBytes_);
      } else {
        if (data_.size() < bytes) return false;
        std::copy_n(data_.data(), bytes, row + done);
        data_ = data_.subspan(bytes);
      }
      left_ -= pixels;
      done += bytes;
    }
    return true;
  }
  bool endsWithARun() const { return packed_ && left_ > 0; }

 private:
  bool readHead() {
    if (data_.size() < 1 + pixelBytes_) return false;
    const bool repeats = (data_[0] & 0x80) != 0;
    left_ = (data_[0] & 0x7FU) + 1;
    data_ = data_.subspan(1);
    repeated_ = repeats ? data_.data() : nullptr;
    if (repeats) data_ = data_.subspan(pixelBytes_);
    return true;
  }

  ByteView data_;
  bool packed_;
  std::size_t pixelBytes_, width_;
  std::size_t left_ = 0;                    // of the packet
  const std::uint8_t* repeated_ = nullptr;  // its one pixel; null where each has its own
};

// Five bits a colour in two bytes, or a byte each; blue first.
TgaColour colourAt(ByteView bytes, unsigned bits, bool alpha) {
  if (bits >= 24) return {bytes[2], bytes[1], bytes[0], alpha ? bytes[3] : std::uint8_t{255}};
  const unsigned word = littleEndian16(bytes, 0);
  const auto five = [word](int shift) {
    return static_cast<std::uint8_t>(scaledSample(word >> shift & 31, 31, 255));
  };
  return {five(10), five(5), five(0), static_cast<std::uint8_t>(!alpha || (word & 0x8000) != 0 ? 255 : 0)};
}

std::uint8_t straight(std::uint8_t colour, std::uint8_t alpha) {
  if (alpha == 0) return 0;
  return static_cast<std::uint8_t>(std::min(255U, (colour * 255U + alpha / 2U) / alpha));
}

// A row as the layout has it. False where an index has no colour.
bool storeRow(const TgaPicture& picture, ByteView row, bool gray, std::uint8_t* to) {
  const TgaHeader& header = picture.header;
  const std::size_t size = header.pixelBytes();
  const bool alpha = header.alpha != TgaAlpha::none;
  for (std::size_t x = 0; x < header.width; ++x) {
    const ByteView pixel = row.subspan((header.rightToLeft ? header.width - 1 - x : x) * size, size);
    if (header.kind == TgaKind::gray) {
      *to++ = pixel[0];
      if (alpha) *to++ = pixel[1];
      continue;
    }
    TgaColour colour;
    if (header.kind == TgaKind::map) {
      const std::size_t index =
          (size == 1 ? pixel[0] : littleEndian16(pixel, 0)) - std::size_t{header.mapFirst};
      if (index >= picture.map.size()) return false;
      colour = picture.map[index];
    } else {
      colour = colourAt(pixel, header.bits, alpha);
    }
    to = std::copy_n(colour.begin(), gray ? 1 : 4, to);
  }
  return true;
}

void divideByAlpha(const Layout& layout, std::uint8_t* pixels) {
  const std::size_t samples = layout.bitsPerPixel / 8u, size = layout.bytesPerRow * layout.height;
  for (std::size_t at = 0; at < size; at += samples) {
    const std::uint8_t alpha = pixels[at + samples - 1];
    for (std::size_t i = 0; i + 1 < samples; ++i) pixels[at + i] = straight(pixels[at + i], alpha);
  }
}

}  // namespace

bool TgaPicture::isGray() const {
  if (header.kind != TgaKind::map) return header.kind == TgaKind::gray;
  return header.alpha == TgaAlpha::none && std::all_of(map.begin(), map.end(), [](const TgaColour& colour) {
           return colour[0] == colour[1] && colour[1] == colour[2];
         });
}

std::optional<TgaPicture> takeTgaApart(ByteView file, const TgaHeader& header) {
  if (header.dataAt > file.size()) return std::nullopt;
  TgaPicture picture{header, {}, file.subspan(header.dataAt)};
  const std::size_t size = (header.mapBits + 7) / 8;
  for (std::size_t i = 0; header.kind == TgaKind::map && i < header.mapLength; ++i)
    picture.map.push_back(colourAt(file.subspan(header.mapAt + i * size, size), header.mapBits,
                                   header.alpha != TgaAlpha::none));
  return picture;
}

Answer<Pixels> decodeTgaPixels(const TgaPicture& picture, const Limits& limits, std::size_t fileSize) {
  const TgaHeader& header = picture.header;
  const bool alpha = header.alpha != TgaAlpha::none, gray = picture.isGray();
  Layout layout = plainLayout(header.width, header.height, 8,
                              gray ? CGColorSpaceModel::monochrome : CGColorSpaceModel::rgb, alpha);
  const LimitName limit =
      exceededLimit(limits, layout.width, layout.height, layout.bitsPerPixel / 8u, fileSize);
  if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
  PixelMemory memory(layout.bytesPerRow * layout.height);
  TgaRows rows(picture);
  Bytes row(header.width * header.pixelBytes());
  for (std::size_t y = 0; y < header.height; ++y) {
    std::uint8_t* to = memory.data() + (header.topDown ? y : header.height - 1 - y) * layout.bytesPerRow;
    if (!rows.next(row.data()) || !storeRow(picture, row, gray, to)) return Fault{FaultKind::damaged};
  }
  if (rows.endsWithARun()) return Fault{FaultKind::damaged};
  if (header.alpha == TgaAlpha::premultiplied) divideByAlpha(layout, memory.data());
  if (header.alpha == TgaAlpha::straight) makeOpaqueIfBlank(layout, memory.data());
  return Pixels{layout, std::move(memory).share(), Untagged{}};
}

}  // namespace ostra
