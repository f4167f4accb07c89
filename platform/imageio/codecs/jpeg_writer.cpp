#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>
#include <vector>

#include "platform/imageio/codecs/jpeg.h"
#include "platform/imageio/codecs/jpeg_library.h"
#include "platform/imageio/codecs/jpeg_rows.h"
#include "platform/imageio/codecs/jpeg_settings.h"
#include "platform/imageio/codecs/jpeg_written_segments.h"

namespace ostra {
namespace {

constexpr std::uint32_t kMaximumSide = JPEG_MAX_DIMENSION;

// What the library's calls reach; it lives outside the frame that they jump through.
struct JpegEncoding {
  JpegErrors errors{};
  jpeg_compress_struct library{};
  const Layout& layout;
  const JpegSettings& settings;
  const std::vector<JpegWrittenSegment>& segments;
  JpegRows& rows;
  unsigned char* file = nullptr;
  unsigned long size = 0;

  ~JpegEncoding() {
    jpeg_destroy_compress(&library);
    std::free(file);
  }
};

J_COLOR_SPACE inputSpace(const Layout& layout, int samples) {
  if (layout.model == CGColorSpaceModel::monochrome) return JCS_GRAYSCALE;
  if (layout.model == CGColorSpaceModel::cmyk) return JCS_CMYK;
  return samples == 4 ? JCS_EXT_RGBX : JCS_RGB;
}

void setUp(JpegEncoding& encoding) {
  jpeg_compress_struct& library = encoding.library;
  const JpegSettings& settings = encoding.settings;
  library.image_width = encoding.layout.width;
  library.image_height = encoding.layout.height;
  library.input_components = encoding.rows.samples();
  library.in_color_space = inputSpace(encoding.layout, encoding.rows.samples());
  jpeg_set_defaults(&library);
  // As photographs are: half the size of ink stored as it is.
  if (library.in_color_space == JCS_CMYK) jpeg_set_colorspace(&library, JCS_YCCK);
  jpeg_set_quality(&library, jpegQuality(settings.quality), TRUE);
  if (settings.fullColour) {
    for (int i = 0; i < library.num_components; ++i)
      library.comp_info[i].h_samp_factor = library.comp_info[i].v_samp_factor = 1;
  }
  library.density_unit = settings.densityUnit;
  library.X_density = settings.xDensity;
  library.Y_density = settings.yDensity;
}

// Jumps: nothing here has a destructor.
bool run(JpegEncoding& encoding) {
  jpeg_compress_struct& library = encoding.library;
  prepareJpegErrors(encoding.errors);
  library.err = &encoding.errors.manager;
  if (setjmp(encoding.errors.escape) != 0) return false;
  jpeg_create_compress(&library);
  jpeg_mem_dest(&library, &encoding.file, &encoding.size);
  setUp(encoding);
  jpeg_start_compress(&library, TRUE);
  for (const JpegWrittenSegment& segment : encoding.segments)
    jpeg_write_marker(&library, segment.marker, segment.data.data(),
                      static_cast<unsigned>(segment.data.size()));
  for (std::uint32_t y = 0; y < encoding.layout.height; ++y) {
    auto* row = const_cast<JSAMPROW>(encoding.rows.row(y));
    jpeg_write_scanlines(&library, &row, 1);
  }
  jpeg_finish_compress(&library);
  return true;
}

}  // namespace

int jpegQuality(double quality) {
  constexpr double kKnee = 0.9, kAtKnee = 92;
  const double q = std::clamp(quality, 0.0, 1.0);
  const double scaled =
      q <= kKnee ? q / kKnee * kAtKnee : kAtKnee + (q - kKnee) / (1 - kKnee) * (100 - kAtKnee);
  return std::max(1, static_cast<int>(std::lround(scaled)));
}

Answer<Bytes> encodeJpeg(const Pixels& pixels, const Properties* properties) {
  if (pixels.layout.width > kMaximumSide || pixels.layout.height > kMaximumSide)
    return Fault{FaultKind::damaged};
  const auto segments = jpegSegmentsToWrite(pixels, properties);
  if (!segments) return Fault{FaultKind::damaged};
  const JpegSettings settings = jpegSettings(properties);
  JpegRows rows(pixels);
  JpegEncoding encoding{{}, {}, pixels.layout, settings, *segments, rows};
  if (!run(encoding)) {
    if (lacksMemory(encoding.errors)) throw std::bad_alloc();
    return Fault{FaultKind::damaged};
  }
  return Bytes(encoding.file, encoding.file + encoding.size);
}

}  // namespace ostra
