#include "platform/imageio/modules/tiff/tiff_decode.h"

#include <utility>

#include "platform/imageio/codecs/decode_clock.h"
#include "platform/imageio/modules/tiff/tiff_pixels.h"
#include "platform/imageio/pixel_memory.h"

namespace ostra {
namespace {

using Result = std::optional<Fault>;  // nothing when all is well

Result decodeBands(TiffBands& bands, TiffPixels& pixels, std::uint8_t* to, std::uint32_t seconds) {
  const DecodeClock clock(seconds);
  while (true) {
    const auto rows = bands.next();
    if (!rows) return Fault{FaultKind::damaged};
    if (*rows == 0) return std::nullopt;
    for (std::uint32_t row = 0; row < *rows; ++row, to += pixels.layout().bytesPerRow)
      pixels.write(bands.blocks(), row, to);
    if (clock.isOver()) return Fault{FaultKind::limit, LimitName::seconds};
  }
}

LimitName exceeded(const Limits& limits, const Layout& layout, const TiffFile& file) {
  return exceededLimit(limits, layout.width, layout.height, layout.bitsPerPixel / 8u, file.bytes().size());
}

Answer<Pixels> decodeBySamples(const TiffFile& file, const TiffDirectory& directory, ProfileRecord profile,
                               const Limits& limits) {
  auto pixels = TiffPixels::make(file, directory, std::holds_alternative<IccProfile>(profile));
  if (!pixels) return Fault{FaultKind::damaged};
  const Layout& layout = pixels->layout();
  const LimitName limit = exceeded(limits, layout, file);
  if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
  TiffBands bands(file, directory);
  // A tile may be much larger than the picture.
  const LimitName ofBands = exceededLimit(limits, 1, 1, bands.bytes(), file.bytes().size());
  if (ofBands != LimitName::none) return Fault{FaultKind::limit, ofBands};
  PixelMemory memory(layout.bytesPerRow * layout.height);
  if (const Result fault = decodeBands(bands, *pixels, memory.data(), limits.seconds)) return *fault;
  return Pixels{layout, std::move(memory).share(), std::move(profile)};
}

/// Subsampled colours and old JPEG: the library's own conversion, to 8 bits.
Answer<Pixels> decodeByLibrary(const TiffFile& file, const TiffDirectory& directory, ProfileRecord profile,
                               const Limits& limits) {
  Layout layout;
  layout.width = directory.width;
  layout.height = directory.height;
  layout.bytesPerRow = std::size_t{layout.width} * 4;
  layout.bitmapInfo = static_cast<CGBitmapInfo>(CGImageAlphaInfo::noneSkipLast);
  const LimitName limit = exceeded(limits, layout, file);
  if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
  PixelMemory memory(layout.bytesPerRow * layout.height);
  TIFFSetField(file.get(), TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);  // as they are stored
  auto* const raster = reinterpret_cast<std::uint32_t*>(memory.data());
  constexpr int kStopAtErrors = 1;
  if (TIFFReadRGBAImageOriented(file.get(), layout.width, layout.height, raster, ORIENTATION_TOPLEFT,
                                kStopAtErrors) == 0)
    return Fault{FaultKind::damaged};
  return Pixels{layout, std::move(memory).share(), std::move(profile)};
}

}  // namespace

Answer<Pixels> decodeTiffPixels(const TiffFile& file, const TiffDirectory& directory, ProfileRecord profile,
                                const Limits& limits) {
  const unsigned before = file.complaints();
  const auto decode = directory.colour == TiffColour::other ? decodeByLibrary : decodeBySamples;
  auto pixels = decode(file, directory, std::move(profile), limits);
  if (std::holds_alternative<Pixels>(pixels) && file.complaints() != before) return Fault{FaultKind::damaged};
  return pixels;
}

}  // namespace ostra
