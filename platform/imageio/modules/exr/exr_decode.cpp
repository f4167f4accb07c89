#include "platform/imageio/modules/exr/exr_decode.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <ImfChromaticities.h>
#include <ImfStandardAttributes.h>
#include <half.h>

#include "platform/imageio/codecs/decode_clock.h"
#include "platform/imageio/codecs/light_space.h"
#include "platform/imageio/modules/exr/exr_rows.h"
#include "platform/imageio/pixel_memory.h"

namespace ostra {
namespace {

std::optional<std::array<double, 8>> primariesOf(const Imf::Header& header) {
  if (!Imf::hasChromaticities(header)) return std::nullopt;
  const Imf::Chromaticities& told = Imf::chromaticities(header);
  return std::array<double, 8>{told.red.x,  told.red.y,  told.green.x, told.green.y,
                               told.blue.x, told.blue.y, told.white.x, told.white.y};
}

// Gray has no primaries.
LightSpace spaceOf(const ExrFile& file, const ExrChannels& channels) {
  const bool isGray = channels.colour == ExrColour::luminance;
  return LightSpace(isGray ? std::nullopt : primariesOf(file.header()));
}

Layout decodedLayout(const ExrFile& file, const ExrChannels& channels) {
  const bool isGray = channels.colour == ExrColour::luminance;
  const ExrSize size = sizeOf(file.header().displayWindow());
  Layout layout;
  layout.width = size.width;
  layout.height = size.height;
  layout.bitsPerComponent = 16;
  layout.bitsPerPixel = isGray ? (channels.hasAlpha ? 32 : 16) : 64;
  layout.bytesPerRow = std::size_t{layout.width} * (layout.bitsPerPixel / 8u);
  layout.model = isGray ? CGColorSpaceModel::monochrome : CGColorSpaceModel::rgb;
  const CGImageAlphaInfo alpha = channels.hasAlpha ? CGImageAlphaInfo::last
                                 : isGray          ? CGImageAlphaInfo::none
                                                   : CGImageAlphaInfo::noneSkipLast;
  layout.bitmapInfo = static_cast<CGBitmapInfo>(alpha) | kCGBitmapByteOrder16Little;
  return layout;
}

/// The stored values of light. Most light was stored as half floats, of which there are few.
class ExrValues {
 public:
  explicit ExrValues(const LightSpace& space) : space_(space), ofHalf_(65536) {
    for (unsigned bits = 0; bits < ofHalf_.size(); ++bits)
      ofHalf_[bits] = space.valueOf(half(half::FromBits, static_cast<std::uint16_t>(bits)));
  }
  std::uint16_t of(float light) const {
    const half nearest(light);
    return static_cast<float>(nearest) == light ? ofHalf_[nearest.bits()] : space_.valueOf(light);
  }

 private:
  LightSpace space_;
  std::vector<std::uint16_t> ofHalf_;
};

/// Light as pixels. It is stored multiplied by its opacity.
class ExrPixels {
 public:
  ExrPixels(const ExrFile& file, const ExrChannels& channels)
      : values_(spaceOf(file, channels)),
        isGray_(channels.colour == ExrColour::luminance),
        hasAlpha_(channels.hasAlpha) {}

  std::size_t bytes() const { return isGray_ ? (hasAlpha_ ? 4 : 2) : 8; }
  /// Light that lies on nothing keeps its colour.
  void write(const ExrRow& row, std::size_t x, std::uint8_t* pixel) {
    const float opacity = hasAlpha_ ? row.alpha[x] : 1.F;
    const bool isMultiplied = opacity > 0 && opacity < 1;
    if (opacity > 0) sawOpacity_ = true;
    const auto value = [&](float light) { return values_.of(isMultiplied ? light / opacity : light); };
    const auto alpha =
        static_cast<std::uint16_t>(opacity > 0 ? std::lround(std::min(opacity, 1.F) * 65535.0) : 0);
    if (isGray_) {
      const std::uint16_t words[] = {value(row.red[x]), alpha};
      std::memcpy(pixel, words, bytes());
    } else {
      const std::uint16_t words[] = {value(row.red[x]), value(row.green[x]), value(row.blue[x]), alpha};
      std::memcpy(pixel, words, bytes());
    }
  }
  /// False for a picture of which all would be transparent.
  bool sawOpacity() const { return sawOpacity_; }

 private:
  ExrValues values_;
  bool isGray_, hasAlpha_;
  bool sawOpacity_ = false;
};

LimitName limitOf(const ExrFile& file, const Layout& layout, const Limits& limits) {
  const LimitName limit =
      exceededLimit(limits, layout.width, layout.height, layout.bitsPerPixel / 8u, file.bytes().size());
  if (limit != LimitName::none) return limit;
  const ExrSize data = sizeOf(file.header().dataWindow());
  const LimitName dataLimit = exceededLimit(limits, data.width, data.height, 1, file.bytes().size());
  if (dataLimit != LimitName::none) return dataLimit;
  return ExrRows::memoryFor(file.header()) > limits.decodedBytes ? LimitName::decodedBytes : LimitName::none;
}

void makeOpaque(const ExrPixels& pixels, PixelMemory& memory) {
  const std::size_t step = pixels.bytes();
  for (std::size_t end = step; end <= memory.size(); end += step)
    memory.data()[end - 1] = memory.data()[end - 2] = 255;
}

}  // namespace

ProfileRecord readExrColour(const ExrFile& file, const ExrChannels& channels) {
  return spaceOf(file, channels).profile();
}

Answer<Pixels> decodeExrPixels(ExrFile& file, const ExrChannels& channels, const Limits& limits) {
  const Layout layout = decodedLayout(file, channels);
  const LimitName limit = limitOf(file, layout, limits);
  if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
  if (!file.isComplete()) return Fault{FaultKind::damaged};
  PixelMemory memory(layout.bytesPerRow * layout.height);
  const Imath::Box2i data = file.header().dataWindow(), display = file.header().displayWindow();
  const auto rows = ExrRows::of(file, channels);
  ExrRow row(sizeOf(data).width);
  ExrPixels pixels(file, channels);
  const DecodeClock clock(limits.seconds);
  const int left = std::max(data.min.x, display.min.x), right = std::min(data.max.x, display.max.x);
  // Rows that nobody sees are read too: a picture is whole or damaged.
  for (int y = data.min.y; y <= data.max.y; ++y) {
    rows->read(y, row);
    if (clock.isOver()) return Fault{FaultKind::limit, LimitName::seconds};
    if (y < display.min.y || y > display.max.y) continue;
    std::uint8_t* const to = memory.data() + layout.bytesPerRow * static_cast<std::size_t>(y - display.min.y);
    for (int x = left; x <= right; ++x)
      pixels.write(row, static_cast<std::size_t>(x - data.min.x),
                   to + pixels.bytes() * static_cast<std::size_t>(x - display.min.x));
  }
  // Where no data lies there is nothing: transparent, or black. Writers that mean no transparency leave
  // zeros.
  const bool isGray = layout.model == CGColorSpaceModel::monochrome;
  if (channels.hasAlpha ? !pixels.sawOpacity() : !isGray) makeOpaque(pixels, memory);
  return Pixels{layout, std::move(memory).share(), readExrColour(file, channels)};
}

}  // namespace ostra
