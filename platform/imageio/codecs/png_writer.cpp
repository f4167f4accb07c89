#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <vector>

#include <png.h>

#include "platform/imageio/codecs/png.h"
#include "platform/imageio/codecs/png_written_chunks.h"
#include "platform/imageio/straight_rows.h"

namespace ostra {
namespace {

// Measured on photographs and screen pictures: more filters and higher levels double the time and more, for
// some hundredths of the size.
constexpr int kCompressionLevel = 2;
constexpr int kFilters = PNG_FILTER_SUB | PNG_FILTER_PAETH;

// What the library's calls reach; it lives outside the frame that they jump through.
struct PngEncoding {
  const Pixels& pixels;
  StraightRows& rows;
  const std::vector<PngWrittenChunk>& chunks;
  int colourType = 0;
  Bytes file;
  bool lacksMemory = false;
};

[[noreturn]] void onError(png_structp png, png_const_charp) { png_longjmp(png, 1); }
void onWarning(png_structp, png_const_charp) {}
void onFlush(png_structp) {}

void onWrite(png_structp png, png_bytep bytes, std::size_t size) {
  auto& encoding = *static_cast<PngEncoding*>(png_get_io_ptr(png));
  bool stored = false;
  try {
    encoding.file.insert(encoding.file.end(), bytes, bytes + size);
    stored = true;
  } catch (const std::exception&) {
    encoding.lacksMemory = true;
  }
  if (!stored) png_error(png, "no memory");
}

png_voidp onAllocate(png_structp png, png_alloc_size_t size) {
  void* memory = std::malloc(size);
  if (memory == nullptr) static_cast<PngEncoding*>(png_get_mem_ptr(png))->lacksMemory = true;
  return memory;
}
void onFree(png_structp, png_voidp memory) { std::free(memory); }

void writeChunks(png_structp png, const PngEncoding& encoding, bool afterPixels) {
  for (const PngWrittenChunk& chunk : encoding.chunks) {
    if (chunk.afterPixels == afterPixels)
      png_write_chunk(png, chunk.type, chunk.data.data(), chunk.data.size());
  }
}

// Jumps: nothing here has a destructor.
bool run(png_structp png, png_infop info, PngEncoding& encoding) {
  const Layout& layout = encoding.pixels.layout;
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  png_set_write_fn(png, &encoding, onWrite, onFlush);
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_set_compression_level(png, kCompressionLevel);
  png_set_filter(png, PNG_FILTER_TYPE_BASE, kFilters);
  png_set_compression_buffer_size(png, 1 << 16);
  png_set_IHDR(png, info, layout.width, layout.height, layout.bitsPerComponent, encoding.colourType,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  writeChunks(png, encoding, false);
  if (layout.bitsPerComponent == 16) png_set_swap(png);
  if (encoding.rows.alpha() == CGImageAlphaInfo::noneSkipLast) png_set_filler(png, 0, PNG_FILLER_AFTER);
  for (std::uint32_t y = 0; y < layout.height; ++y) png_write_row(png, encoding.rows.row(y));
  writeChunks(png, encoding, true);
  png_write_end(png, nullptr);
  return true;
}

// Room for the largest file that this can become. What is not filled costs addresses only, while a file that
// grows is held twice each time it moves. Where there are not the addresses, it grows.
void reserveFile(PngEncoding& encoding, std::uint64_t samples) {
  const Layout& layout = encoding.pixels.layout;
  const std::uint64_t row = 1 + layout.width * samples * (layout.bitsPerComponent / 8u);
  std::uint64_t size = row * layout.height;
  size += size / 500 + (1u << 16);
  for (const PngWrittenChunk& chunk : encoding.chunks) size += chunk.data.size();
  try {
    encoding.file.reserve(size);
  } catch (const std::exception&) {
    return;
  }
}

bool encodeInto(PngEncoding& encoding) {
  png_structp png = png_create_write_struct_2(PNG_LIBPNG_VER_STRING, nullptr, onError, onWarning, &encoding,
                                              onAllocate, onFree);
  if (png == nullptr) return false;
  png_infop info = png_create_info_struct(png);
  const bool done = info != nullptr && run(png, info, encoding);
  png_destroy_write_struct(&png, &info);
  return done;
}

std::optional<int> colourTypeOf(const Layout& layout, bool alpha) {
  if (layout.model == CGColorSpaceModel::monochrome)
    return alpha ? PNG_COLOR_TYPE_GRAY_ALPHA : PNG_COLOR_TYPE_GRAY;
  if (layout.model == CGColorSpaceModel::rgb) return alpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB;
  return std::nullopt;
}

std::uint64_t samplesOf(int colourType) {
  return ((colourType & PNG_COLOR_MASK_COLOR) != 0 ? 3 : 1) +
         ((colourType & PNG_COLOR_MASK_ALPHA) != 0 ? 1 : 0);
}

}  // namespace

Answer<Bytes> encodePng(const Pixels& pixels, const Properties* properties) {
  StraightRows rows(pixels);
  const auto colourType = colourTypeOf(pixels.layout, rows.alpha() == CGImageAlphaInfo::last);
  if (!colourType) return Fault{FaultKind::damaged};
  const auto chunks = pngChunksToWrite(pixels, properties);
  if (!chunks) return Fault{FaultKind::damaged};
  PngEncoding encoding{pixels, rows, *chunks, *colourType, {}, false};
  reserveFile(encoding, samplesOf(*colourType));
  const bool done = encodeInto(encoding);
  if (encoding.lacksMemory) throw std::bad_alloc();
  if (!done) return Fault{FaultKind::damaged};
  return std::move(encoding.file);
}

}  // namespace ostra
