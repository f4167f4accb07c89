#include <string>
#include <utility>

#include "platform/imageio/codecs/ico.h"
#include "platform/imageio/codecs/ico_directory.h"
#include "platform/imageio/codecs/little_endian.h"
#include "platform/imageio/codecs/plain_pixels.h"
#include "platform/imageio/codecs/plain_rows.h"
#include "platform/imageio/codecs/png.h"
#include "platform/imageio/codecs/written_profile.h"
#include "platform/imageio/metadata/carrier.h"

namespace ostra {
namespace {

constexpr std::uint32_t kLongestSide = 256;

// Old programs read bitmaps alone; new ones expect a PNG at the largest size.
bool becomesPng(const Pixels& pixels, const Properties* properties) {
  const Layout& layout = pixels.layout;
  const bool metadata =
      properties != nullptr && properties->carrier != nullptr && !properties->carrier->empty();
  return layout.width == kLongestSide || layout.height == kLongestSide || metadata ||
         needsProfile(pixels.profile, layout.model);
}

// As the only kind of PNG that old readers of icons know: RGB with alpha, 8 bits each. A profile describes
// the pixels as they are.
Pixels asRgba(const Pixels& pixels) {
  if (needsProfile(pixels.profile, pixels.layout.model)) return pixels;
  const Layout& from = pixels.layout;
  PlainRows rows(pixels, 8);
  Bytes samples;
  samples.reserve(std::size_t{from.width} * from.height * 4);
  for (std::uint32_t y = 0; y < from.height; ++y) {
    const std::uint8_t* pixel = rows.row(y);
    for (std::uint32_t x = 0; x < from.width; ++x, pixel += rows.samples()) {
      const std::size_t blue = rows.colours() - 1;
      samples.insert(samples.end(), {pixel[0], pixel[blue / 2], pixel[blue],
                                     rows.hasAlpha() ? pixel[rows.colours()] : std::uint8_t{255}});
    }
  }
  Pixels rgba;
  rgba.layout = plainLayout(from.width, from.height, 8, CGColorSpaceModel::rgb, true);
  rgba.bytes = SharedBytes::adopt(std::move(samples));
  if (!std::holds_alternative<Untagged>(pixels.profile))
    rgba.profile = NamedSpace{std::string(kCGColorSpaceSRGB)};
  return rgba;
}

// Blue, green, red, alpha, the bottom row first, and then the transparent pixels once more, a bit for each.
Bytes bitmapOf(const Pixels& pixels) {
  constexpr std::uint32_t kInfoHeader = 40;
  const Layout& layout = pixels.layout;
  PlainRows rows(pixels, 8);
  const std::size_t samples = rows.blueFirstSamples(), maskRow = (std::size_t{layout.width} + 31) / 32 * 4;
  Bytes bitmap, row(layout.width * samples);
  for (const std::uint32_t field :
       {kInfoHeader, layout.width, layout.height * 2, 32U << 16 | 1, 0U,
        layout.height * (layout.width * 4 + static_cast<std::uint32_t>(maskRow)), 0U, 0U, 0U, 0U})
    appendLittleEndian32(bitmap, field);
  Bytes mask(maskRow * layout.height);
  for (std::uint32_t stored = 0; stored < layout.height; ++stored) {
    rows.storeBlueFirst(layout.height - 1 - stored, row.data());
    for (std::uint32_t x = 0; x < layout.width; ++x) {
      const std::uint8_t* pixel = &row[x * samples];
      for (std::size_t i = 0; i < 3; ++i) bitmap.push_back(pixel[samples == 1 ? 0 : i]);
      const std::uint8_t alpha = rows.hasAlpha() ? pixel[3] : std::uint8_t{255};
      bitmap.push_back(alpha);
      if (alpha == 0) mask[stored * maskRow + x / 8] |= static_cast<std::uint8_t>(0x80 >> x % 8);
    }
  }
  bitmap.insert(bitmap.end(), mask.begin(), mask.end());
  return bitmap;
}

}  // namespace

Answer<Bytes> encodeIco(const Pixels& pixels, const Properties* properties) {
  const Layout& layout = pixels.layout;
  if (layout.model != CGColorSpaceModel::rgb && layout.model != CGColorSpaceModel::monochrome)
    return Fault{FaultKind::damaged};
  if (layout.width > kLongestSide || layout.height > kLongestSide) return Fault{FaultKind::damaged};
  Answer<Bytes> picture = becomesPng(pixels, properties) ? encodePng(asRgba(pixels), properties)
                                                         : Answer<Bytes>(bitmapOf(pixels));
  const auto* contents = std::get_if<Bytes>(&picture);
  if (contents == nullptr) return picture;
  Bytes file;
  for (const std::uint32_t field : {0U, static_cast<std::uint32_t>(IcoKind::icon), 1U})
    appendLittleEndian16(file, field);
  // A side of 256 is told as 0.
  file.insert(file.end(),
              {static_cast<std::uint8_t>(layout.width), static_cast<std::uint8_t>(layout.height), 0, 0});
  appendLittleEndian16(file, 1);
  appendLittleEndian16(file, 32);
  appendLittleEndian32(file, static_cast<std::uint32_t>(contents->size()));
  appendLittleEndian32(file, kIcoDirectoryHead + kIcoEntrySize);
  file.insert(file.end(), contents->begin(), contents->end());
  return file;
}

}  // namespace ostra
