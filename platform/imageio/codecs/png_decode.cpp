#include "platform/imageio/codecs/png_decode.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include <png.h>

#include "platform/imageio/codecs/decode_clock.h"
#include "platform/imageio/pixel_memory.h"

namespace ostra {
namespace {

// The file as the library sees it: the signature and the chunks that make pixels, the checksums among them.
class PixelChunks {
 public:
  PixelChunks(ByteView file, const PngStructure& structure)
      : walk_(file), current_(file.first(kPngSignature.size())), structure_(structure) {}

  bool read(std::uint8_t* into, std::size_t size) {
    while (size > 0) {
      if (current_.empty() && !advance()) return false;
      const std::size_t part = std::min(size, current_.size());
      std::memcpy(into, current_.data(), part);
      current_ = current_.subspan(part);
      into += part;
      size -= part;
    }
    return true;
  }

 private:
  bool advance() {
    while (const auto chunk = walk_.next()) {
      if (!makesPixels(*chunk)) continue;
      current_ = chunk->whole;
      return true;
    }
    return false;
  }
  bool makesPixels(const PngChunk& chunk) {
    if (chunk.type == pngType("IDAT")) pixelsSeen_ = true;
    if (chunk.type == pngType("tRNS")) return structure_.hasTransparency && !pixelsSeen_;
    // Outside palette pictures a palette is only a suggestion.
    if (chunk.type == pngType("PLTE")) return structure_.header.isPalette();
    return chunk.isCritical();
  }

  PngChunkWalk walk_;
  ByteView current_;
  const PngStructure& structure_;
  bool pixelsSeen_ = false;
};

// What the library's calls reach; it lives outside the frame that they jump through.
struct PngDecoding {
  PixelChunks chunks;
  std::vector<png_bytep> rows;
  DecodeClock clock;
  bool outOfTime = false;
};

[[noreturn]] void onError(png_structp png, png_const_charp) { png_longjmp(png, 1); }
// The library only warns of a wrong checksum over transparency, a wrong one over all the pixels, or data
// beyond the last row: pixels that are not what was stored.
void onWarning(png_structp png, png_const_charp text) { onError(png, text); }

void onRead(png_structp png, png_bytep into, std::size_t size) {
  auto& decoding = *static_cast<PngDecoding*>(png_get_io_ptr(png));
  if (!decoding.chunks.read(into, size)) png_error(png, "end of file");
}

void onRow(png_structp png, png_uint_32, int) {
  auto& decoding = *static_cast<PngDecoding*>(png_get_io_ptr(png));
  if (!decoding.clock.isOver()) return;
  decoding.outOfTime = true;
  png_error(png, "too slow");
}

void expandToWholeSamples(png_structp png, const PngStructure& structure) {
  const PngHeader& header = structure.header;
  if (header.isPalette()) png_set_palette_to_rgb(png);
  if (header.isGray() && header.bits < 8) png_set_expand_gray_1_2_4_to_8(png);
  if (structure.hasTransparency) png_set_tRNS_to_alpha(png);
  if (header.bits == 16) png_set_swap(png);
  if (!header.isGray() && !structure.hasAlpha()) png_set_filler(png, 0xFFFF, PNG_FILLER_AFTER);
}

// Jumps: nothing here has a destructor.
bool run(png_structp png, png_infop info, PngDecoding& decoding, const PngStructure& structure,
         std::size_t bytesPerRow) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_set_read_fn(png, &decoding, onRead);
  png_set_read_status_fn(png, onRow);
  png_read_info(png, info);
  expandToWholeSamples(png, structure);
  png_set_interlace_handling(png);
  png_read_update_info(png, info);
  if (png_get_rowbytes(png, info) != bytesPerRow) return false;
  png_read_image(png, decoding.rows.data());
  png_read_end(png, nullptr);
  return true;
}

bool decodeInto(PngDecoding& decoding, const PngStructure& structure, std::size_t bytesPerRow) {
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, onError, onWarning);
  if (png == nullptr) return false;
  png_infop info = png_create_info_struct(png);
  const bool done = info != nullptr && run(png, info, decoding, structure, bytesPerRow);
  png_destroy_read_struct(&png, &info, nullptr);
  return done;
}

// RGB comes with a fourth byte: surfaces have that layout, so that equal spaces are copied as they are.
Layout decodedLayout(const PngStructure& structure) {
  const PngHeader& header = structure.header;
  Layout layout;
  layout.width = header.width;
  layout.height = header.height;
  layout.bitsPerComponent = header.bits == 16 ? 16 : 8;
  layout.model = header.model();
  const int components = header.isGray() ? (structure.hasAlpha() ? 2 : 1) : 4;
  layout.bitsPerPixel = static_cast<std::uint8_t>(components * layout.bitsPerComponent);
  layout.bytesPerRow = std::size_t{layout.width} * (layout.bitsPerPixel / 8u);
  const CGImageAlphaInfo alpha = structure.hasAlpha() ? CGImageAlphaInfo::last
                                 : header.isGray()    ? CGImageAlphaInfo::none
                                                      : CGImageAlphaInfo::noneSkipLast;
  layout.bitmapInfo =
      static_cast<CGBitmapInfo>(alpha) | (layout.bitsPerComponent == 16 ? kCGBitmapByteOrder16Little : 0);
  return layout;
}

}  // namespace

Answer<Pixels> decodePngPixels(ByteView file, const PngStructure& structure, const Limits& limits) {
  const Layout layout = decodedLayout(structure);
  const LimitName limit =
      exceededLimit(limits, layout.width, layout.height, layout.bitsPerPixel / 8u, file.size());
  if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
  PixelMemory memory(layout.bytesPerRow * layout.height);
  PngDecoding decoding{PixelChunks(file, structure), std::vector<png_bytep>(layout.height),
                       DecodeClock(limits.seconds)};
  for (std::size_t y = 0; y < layout.height; ++y) decoding.rows[y] = memory.data() + y * layout.bytesPerRow;
  if (!decodeInto(decoding, structure, layout.bytesPerRow))
    return decoding.outOfTime ? Fault{FaultKind::limit, LimitName::seconds} : Fault{FaultKind::damaged};
  return Pixels{layout, std::move(memory).share(), Untagged{}};
}

}  // namespace ostra
