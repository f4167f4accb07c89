#include "tests/system/large_pictures.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

#include <jpeglib.h>
#include <png.h>

namespace ostra::test {
namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, CloseFile>;

OpenFile created(const std::string& path) {
  OpenFile file(std::fopen(path.c_str(), "wb"));
  if (!file) throw std::runtime_error("cannot write " + path);
  return file;
}

/// Eight random bytes for each number, whatever came before: rows can be made in any order.
std::uint64_t scrambled(std::uint64_t value) {
  value += 0x9E3779B97F4A7C15;
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
  return value ^ (value >> 31);
}

int colourTypeOf(unsigned samples) {
  switch (samples) {
    case 1:
      return PNG_COLOR_TYPE_GRAY;
    case 2:
      return PNG_COLOR_TYPE_GRAY_ALPHA;
    case 3:
      return PNG_COLOR_TYPE_RGB;
    default:
      return PNG_COLOR_TYPE_RGB_ALPHA;
  }
}

[[noreturn]] void onJpegError(j_common_ptr library) {
  char words[JMSG_LENGTH_MAX];
  library->err->format_message(library, words);
  throw std::runtime_error(words);
}

[[noreturn]] void onPngError(png_structp, png_const_charp words) { throw std::runtime_error(words); }

}  // namespace

void LargePicture::makeRow(std::uint32_t y, std::vector<std::uint8_t>& row) const {
  const std::size_t size = std::size_t{width} * samples * bits / 8;
  const std::uint64_t start = scrambled(seed) + std::uint64_t{y} * (size / 8 + 1);
  row.resize((size + 7) / 8 * 8);
  for (std::size_t i = 0; i < row.size(); i += 8) {
    const std::uint64_t random = scrambled(start + i / 8);
    std::memcpy(row.data() + i, &random, 8);
  }
  row.resize(size);
  if (noise) return;
  const unsigned bytes = bits / 8, pixel = samples * bytes;
  for (std::size_t i = 0; i < size; i += bytes) {
    const std::size_t x = i / pixel, sample = i % pixel / bytes;
    // The lower byte of 16 bits stays noise.
    row[i] =
        static_cast<std::uint8_t>((x * (sample + 1) / 24 + y * (3 - sample % 3) / 16 + (row[i] & 3)) & 255);
  }
}

void writeLargePng(const std::string& path, const LargePicture& picture,
                   const std::vector<std::uint8_t>& profile) {
  const OpenFile file = created(path);
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, onPngError, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file.get());
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_set_compression_level(png, picture.noise ? 0 : 1);
  png_set_filter(png, PNG_FILTER_TYPE_BASE, picture.noise ? PNG_FILTER_NONE : PNG_FILTER_SUB);
  png_set_compression_buffer_size(png, 1 << 18);
  png_set_IHDR(png, info, picture.width, picture.height, static_cast<int>(picture.bits),
               colourTypeOf(picture.samples), PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  if (!profile.empty())
    png_set_iCCP(png, info, "profile", PNG_COMPRESSION_TYPE_BASE, profile.data(),
                 static_cast<png_uint_32>(profile.size()));
  png_write_info(png, info);
  std::vector<std::uint8_t> row;
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    picture.makeRow(y, row);
    png_write_row(png, row.data());
  }
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
}

void writeLargeJpeg(const std::string& path, const LargePicture& picture) {
  const OpenFile file = created(path);
  jpeg_error_mgr errors{};
  jpeg_compress_struct library{};
  library.err = jpeg_std_error(&errors);
  errors.error_exit = onJpegError;
  jpeg_create_compress(&library);
  jpeg_stdio_dest(&library, file.get());
  library.image_width = picture.width;
  library.image_height = picture.height;
  library.input_components = static_cast<int>(picture.samples);
  library.in_color_space = picture.samples == 1 ? JCS_GRAYSCALE : JCS_RGB;
  jpeg_set_defaults(&library);
  jpeg_set_quality(&library, 85, TRUE);
  jpeg_start_compress(&library, TRUE);
  std::vector<std::uint8_t> row;
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    picture.makeRow(y, row);
    JSAMPROW rows[] = {row.data()};
    jpeg_write_scanlines(&library, rows, 1);
  }
  jpeg_finish_compress(&library);
  jpeg_destroy_compress(&library);
}

}  // namespace ostra::test
