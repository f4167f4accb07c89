#include "platform/imageio/writable_pixels.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include "platform/imageio/limits.h"
#include "platform/imageio/pixel_memory.h"
#include "platform/imageio/profile_space.h"

namespace ostra {
namespace {

enum class Extra { none, skipped, straight, premultiplied };

struct Arrangement {
  Extra extra = Extra::none;
  bool first = false;
};

std::optional<Arrangement> arrangementOf(CGImageAlphaInfo info) {
  switch (info) {
    case CGImageAlphaInfo::none:
      return Arrangement{};
    case CGImageAlphaInfo::premultipliedLast:
      return Arrangement{Extra::premultiplied, false};
    case CGImageAlphaInfo::premultipliedFirst:
      return Arrangement{Extra::premultiplied, true};
    case CGImageAlphaInfo::last:
      return Arrangement{Extra::straight, false};
    case CGImageAlphaInfo::first:
      return Arrangement{Extra::straight, true};
    case CGImageAlphaInfo::noneSkipLast:
      return Arrangement{Extra::skipped, false};
    case CGImageAlphaInfo::noneSkipFirst:
      return Arrangement{Extra::skipped, true};
    case CGImageAlphaInfo::only:
      break;
  }
  return std::nullopt;
}

std::optional<CGColorSpaceModel> modelOf(const CGImage& image, std::size_t colours) {
  if (const CGColorSpaceRef& space = image.colorSpace()) {
    return space->numberOfComponents() == static_cast<int>(colours) ? std::optional(space->model())
                                                                    : std::nullopt;
  }
  switch (colours) {
    case 1:
      return CGColorSpaceModel::monochrome;
    case 3:
      return CGColorSpaceModel::rgb;
    case 4:
      return CGColorSpaceModel::cmyk;
    default:
      return std::nullopt;
  }
}

bool isWritable(CGColorSpaceModel model) {
  return model == CGColorSpaceModel::monochrome || model == CGColorSpaceModel::rgb ||
         model == CGColorSpaceModel::cmyk;
}

// Colour divided by alpha, for every pair of 8-bit values: a division a sample would be the slowest part of
// writing.
const std::array<std::array<std::uint8_t, 256>, 256>& straightColours() {
  static const auto table = [] {
    auto values = std::make_unique<std::array<std::array<std::uint8_t, 256>, 256>>();
    for (unsigned alpha = 1; alpha < 256; ++alpha) {
      for (unsigned colour = 0; colour < 256; ++colour)
        (*values)[alpha][colour] =
            static_cast<std::uint8_t>(std::min(255u, (colour * 255 + alpha / 2) / alpha));
    }
    (*values)[0].fill(0);
    return *values;
  }();
  return table;
}

std::uint8_t straight(std::uint8_t colour, std::uint8_t alpha) { return straightColours()[alpha][colour]; }
std::uint16_t straight(std::uint16_t colour, std::uint16_t alpha) {
  if (alpha == 0) return 0;
  const std::uint32_t value = (std::uint32_t{colour} * 65535u + alpha / 2u) / alpha;
  return static_cast<std::uint16_t>(std::min<std::uint32_t>(value, 65535));
}

template <class Sample>
void arrangeRow(const std::uint8_t* from, std::uint8_t* to, std::size_t pixels, std::size_t colours,
                const Arrangement& arrangement) {
  Sample in[5];
  Sample out[5];
  const std::size_t size = (colours + 1) * sizeof(Sample);
  for (std::size_t x = 0; x < pixels; ++x, from += size, to += size) {
    std::memcpy(in, from, size);
    const Sample* colour = arrangement.first ? in + 1 : in;
    const Sample alpha = arrangement.first ? in[0] : in[colours];
    for (std::size_t c = 0; c < colours; ++c) {
      out[c] = arrangement.extra == Extra::premultiplied ? straight(colour[c], alpha) : colour[c];
    }
    out[colours] = alpha;
    std::memcpy(to, out, size);
  }
}

SharedBytes arranged(const CGImage& image, std::size_t colours, const Arrangement& arrangement) {
  PixelMemory memory(image.bytesPerRow() * image.height());
  for (std::size_t y = 0; y < image.height(); ++y) {
    const std::uint8_t* from = image.data() + y * image.bytesPerRow();
    std::uint8_t* to = memory.data() + y * image.bytesPerRow();
    if (image.bitsPerComponent() == 8) {
      arrangeRow<std::uint8_t>(from, to, image.width(), colours, arrangement);
    } else {
      arrangeRow<std::uint16_t>(from, to, image.width(), colours, arrangement);
    }
  }
  return std::move(memory).share();
}

CGImageAlphaInfo writtenAlpha(Extra extra) {
  switch (extra) {
    case Extra::none:
      return CGImageAlphaInfo::none;
    case Extra::skipped:
      return CGImageAlphaInfo::noneSkipLast;
    default:
      return CGImageAlphaInfo::last;
  }
}

// Whether the rows lie inside the memory, each pixel whole.
bool isConsistent(const CGImage& image) {
  const std::size_t bits = image.bitsPerComponent();
  if ((bits != 8 && bits != 16) || image.bitsPerPixel() % bits != 0 || image.bitsPerPixel() > 5 * bits)
    return false;
  if (image.width() == 0 || image.height() == 0) return false;
  if (image.width() > UINT32_MAX || image.height() > UINT32_MAX) return false;
  const auto row = checkedProduct(image.width(), image.bitsPerPixel() / 8);
  const auto before = checkedProduct(image.bytesPerRow(), image.height() - 1);
  const std::size_t held = image.pixels().view.size();
  return row && before && *row <= image.bytesPerRow() && *row <= held && *before <= held - *row;
}

}  // namespace

std::optional<Pixels> writablePixels(const CGImage& image) {
  const auto arrangement = arrangementOf(image.alphaInfo());
  if (!arrangement || !isConsistent(image)) return std::nullopt;
  const std::size_t samples = image.bitsPerPixel() / image.bitsPerComponent();
  const std::size_t colours = arrangement->extra == Extra::none ? samples : samples - 1;
  const auto model = modelOf(image, colours);
  if (!model || !isWritable(*model)) return std::nullopt;

  Pixels pixels;
  pixels.layout.width = static_cast<std::uint32_t>(image.width());
  pixels.layout.height = static_cast<std::uint32_t>(image.height());
  pixels.layout.bitsPerComponent = static_cast<std::uint8_t>(image.bitsPerComponent());
  pixels.layout.bitsPerPixel = static_cast<std::uint8_t>(image.bitsPerPixel());
  pixels.layout.bytesPerRow = image.bytesPerRow();
  pixels.layout.model = *model;
  pixels.layout.bitmapInfo = static_cast<CGBitmapInfo>(writtenAlpha(arrangement->extra)) |
                             (image.bitsPerComponent() == 16 ? kCGBitmapByteOrder16Little : 0);
  const bool asIs = arrangement->extra != Extra::premultiplied && !arrangement->first;
  pixels.bytes = asIs ? image.pixels() : arranged(image, colours, *arrangement);
  pixels.profile = profileOfSpace(image.colorSpace());
  return pixels;
}

}  // namespace ostra
