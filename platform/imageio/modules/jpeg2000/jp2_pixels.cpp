#include "platform/imageio/modules/jpeg2000/jp2_pixels.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace ostra {
namespace {

std::uint32_t largest(unsigned bits) { return (std::uint32_t{1} << bits) - 1; }

// v * most / largest, rounded.
std::uint16_t scaled(std::uint32_t value, unsigned bits, unsigned toBits) {
  const std::uint64_t from = largest(bits), to = largest(toBits);
  return static_cast<std::uint16_t>((value * to + from / 2) / from);
}

/// One channel, read row by row as the numbers from 0 on that its bits hold.
class ChannelRows {
 public:
  ChannelRows(const Jp2Channel& channel, const Codestream& codestream, const J2kComponent& base,
              const opj_image_t& image)
      : channel_(channel),
        component_(codestream.components[channel.component]),
        samples_(image.comps[channel.component].data),
        base_(base),
        across_(component_.dx / base.dx),
        down_(component_.dy / base.dy) {}

  bool read(std::uint32_t y, std::vector<std::uint16_t>& row) const {
    const OPJ_INT32* from =
        samples_ +
        std::size_t{nearest(base_.top + y, down_, component_.top, component_.height)} * component_.width;
    for (std::uint32_t x = 0; x < base_.width; ++x) {
      const std::uint32_t at =
          across_ == 1 ? x : nearest(base_.left + x, across_, component_.left, component_.width);
      const auto value = valueOf(from[std::min(at, component_.width - 1)]);
      if (!value) return false;
      row[x] = *value;
    }
    return true;
  }

 private:
  // The sample whose area on the grid holds the pixel, or the closest one where the picture's edge cuts it.
  static std::uint32_t nearest(std::uint32_t pixel, std::uint32_t step, std::uint32_t first,
                               std::uint32_t count) {
    const std::uint32_t sample = pixel / step;
    return std::min(sample > first ? sample - first : 0, count - 1);
  }

  std::optional<std::uint16_t> valueOf(OPJ_INT32 sample) const {
    if (!channel_.palette) return unsignedOf(sample, channel_.isSigned, channel_.bits);
    if (sample < 0 || static_cast<std::size_t>(sample) >= channel_.palette->size()) return std::nullopt;
    const std::uint32_t entry = (*channel_.palette)[static_cast<std::size_t>(sample)];
    const std::uint32_t offset = channel_.isSigned ? std::uint32_t{1} << (channel_.bits - 1) : 0;
    return static_cast<std::uint16_t>((entry + offset) & largest(channel_.bits));
  }

  static std::uint16_t unsignedOf(OPJ_INT32 sample, bool isSigned, unsigned bits) {
    const std::int64_t value = std::int64_t{sample} + (isSigned ? std::int64_t{1} << (bits - 1) : 0);
    return static_cast<std::uint16_t>(std::clamp<std::int64_t>(value, 0, largest(bits)));
  }

  const Jp2Channel& channel_;
  const J2kComponent& component_;
  const OPJ_INT32* samples_;
  const J2kComponent& base_;
  std::uint32_t across_, down_;
};

using Rows = std::vector<std::vector<std::uint16_t>>;

// IEC 61966-2-1, amendment 1; the differences' zero is their middle.
void yccToRgb(Rows& rows, const Jp2Picture& picture) {
  const auto fraction = [&](std::size_t c, std::size_t x) {
    return static_cast<double>(rows[c][x]) / largest(picture.channels[c].bits);
  };
  const auto difference = [&](std::size_t c, std::size_t x) {
    const unsigned bits = picture.channels[c].bits;
    return (static_cast<double>(rows[c][x]) - (std::uint32_t{1} << (bits - 1))) / largest(bits);
  };
  for (std::size_t x = 0; x < picture.width; ++x) {
    const double y = fraction(0, x), cb = difference(1, x), cr = difference(2, x);
    const double colours[] = {y + 1.402 * cr, y - 0.344136 * cb - 0.714136 * cr, y + 1.772 * cb};
    for (std::size_t c = 0; c < 3; ++c)
      rows[c][x] = static_cast<std::uint16_t>(
          std::lround(std::clamp(colours[c], 0.0, 1.0) * largest(picture.writtenBits())));
  }
}

/// From a channel's numbers to the picture's.
std::vector<std::uint16_t> scaleOf(unsigned bits, unsigned toBits) {
  std::vector<std::uint16_t> scale(std::size_t{1} << bits);
  for (std::uint32_t value = 0; value < scale.size(); ++value) scale[value] = scaled(value, bits, toBits);
  return scale;
}

template <class Sample>
void interleave(const Rows& rows, std::size_t step, std::uint32_t width, std::uint8_t* pixels) {
  for (std::size_t c = 0; c < rows.size(); ++c) {
    for (std::size_t x = 0; x < width; ++x) {
      const auto sample = static_cast<Sample>(rows[c][x]);
      std::memcpy(pixels + (x * step + c) * sizeof(Sample), &sample, sizeof sample);
    }
  }
}

}  // namespace

Layout layoutOf(const Jp2Picture& picture) {
  Layout layout;
  layout.width = picture.width;
  layout.height = picture.height;
  layout.bitsPerComponent = static_cast<std::uint8_t>(picture.writtenBits());
  layout.model = picture.space.model;
  const bool isRgb = layout.model == CGColorSpaceModel::rgb;
  const std::size_t samples = isRgb ? 4 : picture.channels.size();
  layout.bitsPerPixel = static_cast<std::uint8_t>(samples * layout.bitsPerComponent);
  layout.bytesPerRow = std::size_t{layout.width} * (layout.bitsPerPixel / 8u);
  const CGImageAlphaInfo alpha = picture.alpha == Jp2Alpha::straight ? CGImageAlphaInfo::last
                                 : picture.alpha == Jp2Alpha::premultiplied
                                     ? CGImageAlphaInfo::premultipliedLast
                                 : isRgb ? CGImageAlphaInfo::noneSkipLast
                                         : CGImageAlphaInfo::none;
  layout.bitmapInfo =
      static_cast<CGBitmapInfo>(alpha) | (layout.bitsPerComponent == 16 ? kCGBitmapByteOrder16Little : 0);
  return layout;
}

bool drawJp2(const Jp2Picture& picture, const Codestream& codestream, const opj_image_t& image,
             std::uint8_t* pixels) {
  const Layout layout = layoutOf(picture);
  const std::size_t step = layout.bitsPerPixel / layout.bitsPerComponent;
  const J2kComponent& base = codestream.components[picture.channels.front().component];
  std::vector<ChannelRows> channels;
  std::vector<std::vector<std::uint16_t>> scales;
  for (const Jp2Channel& channel : picture.channels) {
    channels.emplace_back(channel, codestream, base, image);
    scales.push_back(scaleOf(channel.bits, picture.writtenBits()));
  }
  Rows rows(channels.size(), std::vector<std::uint16_t>(picture.width));
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    for (std::size_t c = 0; c < channels.size(); ++c) {
      if (!channels[c].read(y, rows[c])) return false;
    }
    if (picture.space.isYcc) yccToRgb(rows, picture);
    for (std::size_t c = picture.space.isYcc ? 3 : 0; c < rows.size(); ++c) {
      for (std::uint16_t& sample : rows[c]) sample = scales[c][sample];
    }
    std::uint8_t* const to = pixels + y * layout.bytesPerRow;
    layout.bitsPerComponent == 8 ? interleave<std::uint8_t>(rows, step, picture.width, to)
                                 : interleave<std::uint16_t>(rows, step, picture.width, to);
  }
  return true;
}

}  // namespace ostra
