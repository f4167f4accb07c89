#include "platform/imageio/codecs/jpeg_rows.h"

#include <algorithm>
#include <cstring>

namespace ostra {
namespace {

unsigned wordAt(const std::uint8_t* from, std::size_t index) {
  return from[2 * index] | static_cast<unsigned>(from[2 * index + 1]) << 8;
}

std::uint8_t reduced(unsigned word) { return static_cast<std::uint8_t>((word + 128) / 257); }

// `value` of `full` over a background, its share being `alpha` of `full`.
std::uint8_t over(unsigned value, unsigned alpha, unsigned background, unsigned full) {
  const std::uint64_t sum = std::uint64_t{value} * alpha + std::uint64_t{background} * (full - alpha);
  return static_cast<std::uint8_t>((sum * 255 + std::uint64_t{full} * full / 2) /
                                   (std::uint64_t{full} * full));
}

}  // namespace

JpegRows::JpegRows(const Pixels& pixels) : pixels_(pixels), straight_(pixels) {
  const Layout& layout = pixels.layout;
  stored_ = layout.bitsPerPixel / layout.bitsPerComponent;
  alpha_ = straight_.alpha() == CGImageAlphaInfo::last;
  ink_ = layout.model == CGColorSpaceModel::cmyk;
  samples_ = alpha_ ? stored_ - 1 : stored_;
  if (alpha_ || ink_ || layout.bitsPerComponent == 16)
    buffer_.resize(std::size_t{layout.width} * static_cast<std::size_t>(samples_));
}

const std::uint8_t* JpegRows::row(std::uint32_t y) {
  const std::uint8_t* from = straight_.row(y);
  if (buffer_.empty()) return from;
  if (alpha_) {
    putOnWhite(from);
  } else {
    convert(from);
  }
  if (ink_) {
    for (std::uint8_t& sample : buffer_) sample = static_cast<std::uint8_t>(255 - sample);
  }
  return buffer_.data();
}

void JpegRows::convert(const std::uint8_t* from) {
  if (pixels_.layout.bitsPerComponent == 8) {
    std::memcpy(buffer_.data(), from, buffer_.size());
    return;
  }
  for (std::size_t i = 0; i < buffer_.size(); ++i) buffer_[i] = reduced(wordAt(from, i));
}

void JpegRows::putOnWhite(const std::uint8_t* from) {
  const bool deep = pixels_.layout.bitsPerComponent == 16;
  const unsigned full = deep ? 65535 : 255;
  const unsigned white = ink_ ? 0 : full;
  const auto sampleAt = [&](std::size_t index) { return deep ? wordAt(from, index) : from[index]; };
  const auto stored = static_cast<std::size_t>(stored_), colours = static_cast<std::size_t>(samples_);
  for (std::size_t x = 0; x < pixels_.layout.width; ++x) {
    const unsigned alpha = sampleAt(x * stored + colours);
    for (std::size_t c = 0; c < colours; ++c)
      buffer_[x * colours + c] = over(sampleAt(x * stored + c), alpha, white, full);
  }
}

}  // namespace ostra
