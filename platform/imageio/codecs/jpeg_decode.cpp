#include "platform/imageio/codecs/jpeg_decode.h"

#include <algorithm>
#include <new>

#include "platform/imageio/codecs/decode_clock.h"
#include "platform/imageio/codecs/jpeg_library.h"
#include "platform/imageio/pixel_memory.h"

namespace ostra {
namespace {

// What the library's calls reach; it lives outside the frame that they jump through.
struct JpegDecoding {
  JpegErrors errors{};
  jpeg_decompress_struct library{};
  jpeg_source_mgr source{};
  jpeg_progress_mgr progress{};
  DecodeClock clock;
  std::uint32_t mostScans;
  LimitName exceeded = LimitName::none;
  bool ranOut = false;

  explicit JpegDecoding(const Limits& limits) : clock(limits.seconds), mostScans(limits.scans) {}
};

JpegDecoding& decodingOf(j_common_ptr library) { return *static_cast<JpegDecoding*>(library->client_data); }

void onStart(j_decompress_ptr) {}

// The library asks for more than there is: an end marker lets it finish with what it has.
boolean onEnd(j_decompress_ptr library) {
  static constexpr JOCTET kEnd[2] = {0xFF, JPEG_EOI};
  decodingOf(reinterpret_cast<j_common_ptr>(library)).ranOut = true;
  library->src->next_input_byte = kEnd;
  library->src->bytes_in_buffer = sizeof(kEnd);
  return TRUE;
}

void onSkip(j_decompress_ptr library, long count) {
  jpeg_source_mgr& source = *library->src;
  if (count <= 0) return;
  if (static_cast<std::size_t>(count) >= source.bytes_in_buffer) {
    onEnd(library);
    return;
  }
  source.next_input_byte += count;
  source.bytes_in_buffer -= static_cast<std::size_t>(count);
}

void onProgress(j_common_ptr library) {
  JpegDecoding& decoding = decodingOf(library);
  if (static_cast<std::uint32_t>(decoding.library.input_scan_number) > decoding.mostScans) {
    decoding.exceeded = LimitName::scans;
  } else if (decoding.clock.isOver()) {
    decoding.exceeded = LimitName::seconds;
  }
  if (decoding.exceeded != LimitName::none) std::longjmp(decoding.errors.escape, 1);
}

void connect(JpegDecoding& decoding, ByteView file) {
  jpeg_decompress_struct& library = decoding.library;
  library.client_data = &decoding;
  decoding.source.next_input_byte = file.data();
  decoding.source.bytes_in_buffer = file.size();
  decoding.source.init_source = onStart;
  decoding.source.fill_input_buffer = onEnd;
  decoding.source.skip_input_data = onSkip;
  decoding.source.resync_to_restart = jpeg_resync_to_restart;
  decoding.source.term_source = onStart;
  library.src = &decoding.source;
  decoding.progress.progress_monitor = onProgress;
  library.progress = &decoding.progress;
}

J_COLOR_SPACE outputSpace(J_COLOR_SPACE stored) {
  switch (stored) {
    case JCS_GRAYSCALE:
      return JCS_GRAYSCALE;
    case JCS_CMYK:
    case JCS_YCCK:
      return JCS_CMYK;
    case JCS_RGB:
    case JCS_YCbCr:
      return JCS_EXT_RGBX;
    default:
      return JCS_UNKNOWN;
  }
}

void readRows(jpeg_decompress_struct& library, std::uint8_t* pixels, std::size_t bytesPerRow) {
  constexpr JDIMENSION kRows = 16;
  JSAMPROW rows[kRows];
  while (library.output_scanline < library.output_height) {
    const JDIMENSION left = std::min(kRows, library.output_height - library.output_scanline);
    for (JDIMENSION i = 0; i < left; ++i) rows[i] = pixels + (library.output_scanline + i) * bytesPerRow;
    jpeg_read_scanlines(&library, rows, left);
  }
}

// Jumps: nothing here has a destructor. `inverted` tells whether 255 means no ink.
bool run(JpegDecoding& decoding, ByteView file, const Layout& layout, std::uint8_t* pixels, bool& inverted) {
  jpeg_decompress_struct& library = decoding.library;
  prepareJpegErrors(decoding.errors);
  library.err = &decoding.errors.manager;
  if (setjmp(decoding.errors.escape) != 0) return false;
  jpeg_create_decompress(&library);
  connect(decoding, file);
  jpeg_read_header(&library, TRUE);
  library.out_color_space = outputSpace(library.jpeg_color_space);
  if (library.out_color_space == JCS_UNKNOWN || library.image_width != layout.width ||
      library.image_height != layout.height)
    return false;
  decoding.errors.inScan = true;
  jpeg_start_decompress(&library);
  if (library.output_width * std::size_t{layout.bitsPerPixel} / 8 != layout.bytesPerRow ||
      library.out_color_components * 8 != layout.bitsPerPixel)
    return false;
  const bool severalScans = jpeg_has_multiple_scans(&library) != FALSE;
  inverted = library.out_color_space == JCS_CMYK && library.saw_Adobe_marker;
  readRows(library, pixels, layout.bytesPerRow);
  jpeg_finish_decompress(&library);
  // An arithmetic decoder takes whatever is missing for zeros and never warns.
  return !(decoding.ranOut && (severalScans || library.arith_code));
}

std::optional<Layout> decodedLayout(const JpegFrame& frame) {
  if (frame.width == 0 || frame.height == 0 || frame.bits != 8) return std::nullopt;
  if (frame.components != 1 && frame.components != 3 && frame.components != 4) return std::nullopt;
  Layout layout;
  layout.width = frame.width;
  layout.height = frame.height;
  layout.bitsPerPixel = frame.components == 1 ? 8 : 32;
  layout.bytesPerRow = std::size_t{layout.width} * (layout.bitsPerPixel / 8u);
  layout.model = frame.components == 1   ? CGColorSpaceModel::monochrome
                 : frame.components == 3 ? CGColorSpaceModel::rgb
                                         : CGColorSpaceModel::cmyk;
  layout.bitmapInfo = static_cast<CGBitmapInfo>(frame.components == 3 ? CGImageAlphaInfo::noneSkipLast
                                                                      : CGImageAlphaInfo::none);
  return layout;
}

// Progressive files keep every coefficient until the last scan.
std::uint64_t memoryForAPixel(const Layout& layout, const JpegFrame& frame) {
  return layout.bitsPerPixel / 8u + (frame.progressive ? 2u * frame.components : 0u);
}

}  // namespace

Answer<Pixels> decodeJpegPixels(ByteView file, const JpegFrame& frame, const Limits& limits) {
  const auto layout = decodedLayout(frame);
  if (!layout) return Fault{FaultKind::damaged};
  const LimitName limit =
      exceededLimit(limits, layout->width, layout->height, memoryForAPixel(*layout, frame), file.size());
  if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
  PixelMemory memory(layout->bytesPerRow * layout->height);
  JpegDecoding decoding(limits);
  bool inverted = false;
  const bool done = run(decoding, file, *layout, memory.data(), inverted);
  jpeg_destroy_decompress(&decoding.library);
  if (!done && lacksMemory(decoding.errors)) throw std::bad_alloc();
  if (decoding.exceeded != LimitName::none) return Fault{FaultKind::limit, decoding.exceeded};
  if (!done) return Fault{FaultKind::damaged};
  if (inverted) {
    std::transform(memory.data(), memory.data() + memory.size(), memory.data(),
                   [](std::uint8_t sample) { return static_cast<std::uint8_t>(255 - sample); });
  }
  return Pixels{*layout, std::move(memory).share(), Untagged{}};
}

}  // namespace ostra
