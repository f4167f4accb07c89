// A multi-picture index of any content, alone and in the segments of a JPEG.
#include <cstdlib>

#include "platform/imageio/codecs/jpeg_segments.h"

namespace ostra {

namespace {

void demand(bool condition) {
  if (!condition) std::abort();
}

Bytes jpegWith(ByteView index) {
  Bytes jpeg = {0xFF, 0xD8, 0xFF, 0xE2};
  const std::size_t size = 2 + kJpegMpfHead.size() + index.size();
  jpeg.push_back(static_cast<std::uint8_t>(size >> 8));
  jpeg.push_back(static_cast<std::uint8_t>(size & 0xFF));
  jpeg.insert(jpeg.end(), kJpegMpfHead.begin(), kJpegMpfHead.end());
  jpeg.insert(jpeg.end(), index.begin(), index.end());
  return jpeg;
}

void count(ByteView index) {
  constexpr std::size_t kEntry = 16;
  const std::uint32_t views = countJpegViews(index);
  demand(views >= 1 && views <= 1 + index.size() / kEntry);
  if (index.size() > 60'000) return;
  demand(readJpegSegments(jpegWith(index), Limits{}).pictures == views);
}

}  // namespace

}  // namespace ostra

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ostra::count({data, size});
  return 0;
}
