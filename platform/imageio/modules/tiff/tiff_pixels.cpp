#include "platform/imageio/modules/tiff/tiff_pixels.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "platform/imageio/codecs/lab_colour.h"
#include "platform/imageio/codecs/srgb_curve.h"

namespace ostra {
namespace {

constexpr std::uint16_t kFull = 0xFFFF;

// No number becomes 0.
double clamped(double value) { return value > 0 ? std::min(value, 1.0) : 0; }

std::uint16_t word(double value) { return static_cast<std::uint16_t>(std::lround(clamped(value) * kFull)); }

std::uint8_t byte(std::uint16_t value) { return static_cast<std::uint8_t>((value + 128u) / 257u); }

/// The samples of a block as they lie in a row of the picture, `stride` of them a pixel.
template <class Sample>
void spread(const std::vector<Sample>& samples, const TiffBlock& block, std::size_t stride,
            std::vector<Sample>& row) {
  Sample* to = row.data() + block.x * stride + block.firstSample;
  if (block.samples == stride) {
    std::copy(samples.begin(), samples.end(), to);
  } else {
    for (std::size_t i = 0; i < samples.size(); ++i) to[i * stride] = samples[i];
  }
}

}  // namespace

std::optional<TiffPixels> TiffPixels::make(const TiffFile& file, const TiffDirectory& directory,
                                           bool storedAsMeant) {
  TiffPixels pixels(directory, storedAsMeant);
  if (directory.colour == TiffColour::palette) {
    pixels.palette_ = TiffPalette::read(file, directory);
    if (!pixels.palette_) return std::nullopt;
  }
  pixels.makeLayout();
  return pixels;
}

TiffPixels::TiffPixels(const TiffDirectory& directory, bool storedAsMeant)
    : directory_(directory),
      storedAsMeant_(storedAsMeant),
      integers_(directory.bits, directory.format,
                directory.colour == TiffColour::palette || directory.colour == TiffColour::lab) {}

bool TiffPixels::keepsAlpha() const {
  return directory_.alpha != TiffAlpha::none && directory_.colour != TiffColour::cmyk;
}

void TiffPixels::makeLayout() {
  const bool isEight =
      palette_ ? palette_->isEightBits()
               : directory_.bits <= 8 && !directory_.isReal() && directory_.colour != TiffColour::lab;
  layout_.width = directory_.width;
  layout_.height = directory_.height;
  layout_.bitsPerComponent = isEight ? 8 : 16;
  layout_.model = directory_.model();
  const bool isGray = layout_.model == CGColorSpaceModel::monochrome;
  const unsigned components = isGray ? (keepsAlpha() ? 2 : 1) : 4;
  layout_.bitsPerPixel = static_cast<std::uint8_t>(components * layout_.bitsPerComponent);
  layout_.bytesPerRow = std::size_t{layout_.width} * (layout_.bitsPerPixel / 8u);
  CGImageAlphaInfo alpha = CGImageAlphaInfo::none;
  if (keepsAlpha()) {
    const bool premultiplied = directory_.alpha == TiffAlpha::premultiplied && isCopied();
    alpha = premultiplied ? CGImageAlphaInfo::premultipliedLast : CGImageAlphaInfo::last;
  } else if (layout_.model == CGColorSpaceModel::rgb) {
    alpha = CGImageAlphaInfo::noneSkipLast;
  }
  layout_.bitmapInfo = static_cast<CGBitmapInfo>(alpha) | (isEight ? 0 : kCGBitmapByteOrder16Little);
}

/// Whether samples become components without a change.
bool TiffPixels::isCopied() const {
  const bool plain = directory_.photometry != PHOTOMETRIC_MINISWHITE &&
                     (directory_.colour == TiffColour::gray || directory_.colour == TiffColour::rgb ||
                      (directory_.colour == TiffColour::cmyk && directory_.alpha == TiffAlpha::none));
  return plain && directory_.format == SAMPLEFORMAT_UINT && (directory_.bits == 8 || directory_.bits == 16);
}

template <class Sample>
void TiffPixels::copy(const TiffBlock& block, const std::uint8_t* row, std::uint8_t* to) const {
  const std::uint32_t pixels = std::min(block.width, directory_.width - block.x);
  const std::size_t stride = layout_.bitsPerPixel / layout_.bitsPerComponent;
  const std::size_t colours = directory_.colours();
  const auto component = [&](std::size_t place, std::size_t from) {
    const std::uint8_t* source = row + from * sizeof(Sample);
    std::uint8_t* target = to + (block.x * stride + place) * sizeof(Sample);
    for (std::uint32_t x = 0; x < pixels; ++x) {
      std::memcpy(target, source, sizeof(Sample));
      source += block.samples * sizeof(Sample);
      target += stride * sizeof(Sample);
    }
  };
  for (std::uint16_t i = 0; i < block.samples; ++i) {
    const std::size_t sample = block.firstSample + i;
    if (sample < colours) component(sample, i);
    if (keepsAlpha() && sample == directory_.alphaSample) component(colours, i);
  }
  if (stride > colours && !keepsAlpha()) {
    for (std::uint32_t x = 0; x < pixels; ++x)
      std::memset(to + ((block.x + x) * stride + colours) * sizeof(Sample), 0xFF, sizeof(Sample));
  }
}

void TiffPixels::collectIntegers(const TiffBlock& block, const std::uint8_t* row) {
  const std::uint32_t pixels = std::min(block.width, directory_.width - block.x);
  row_.resize(std::size_t{directory_.width} * directory_.samples);
  unpacked_.resize(std::size_t{pixels} * block.samples);
  integers_.unpack(row, unpacked_);
  spread(unpacked_, block, directory_.samples, row_);
}

void TiffPixels::collectReals(const TiffBlock& block, const std::uint8_t* row) {
  const std::uint32_t pixels = std::min(block.width, directory_.width - block.x);
  realRow_.resize(std::size_t{directory_.width} * directory_.samples);
  unpackedReals_.resize(std::size_t{pixels} * block.samples);
  unpackTiffReals(directory_.bits, row, unpackedReals_);
  spread(unpackedReals_, block, directory_.samples, realRow_);
}

/// TIFF 6.0, section 23, has signed a and b; profiles have unsigned ones around the middle, and a lightness
/// of 100 in the highest byte alone. Here as stored, before 8 bits or 16 are known from another.
TiffPixels::Colour TiffPixels::labColour(const std::array<double, 3>& stored) const {
  const bool isDeep = directory_.bits == 16, ofProfiles = directory_.photometry == PHOTOMETRIC_ICCLAB;
  const double most = isDeep ? (ofProfiles ? 65280 : 65535) : 255, unit = isDeep ? 256 : 1;
  const auto chroma = [&](double value) {
    const double turn = 256 * unit;
    if (ofProfiles) return value / unit - 128;
    return (value >= turn / 2 ? value - turn : value) / unit;
  };
  const auto romm = rommOfLab(stored[0] * 100 / most, chroma(stored[1]), chroma(stored[2]));
  return {romm[0], romm[1], romm[2], kFull};
}

TiffPixels::Colour TiffPixels::colourOfIntegers(const std::uint16_t* samples) const {
  Colour colour{0, 0, 0, kFull};
  const std::size_t colours = directory_.colours();
  if (palette_) {
    const auto entry = palette_->at(samples[0]);
    std::copy(entry.begin(), entry.end(), colour.begin());
    return colour;
  }
  if (directory_.colour == TiffColour::lab)
    return labColour({double(samples[0]), double(samples[1]), double(samples[2])});
  std::copy_n(samples, colours, colour.begin());
  const std::uint16_t alpha = directory_.alpha == TiffAlpha::none ? kFull : samples[directory_.alphaSample];
  const bool isInk = directory_.colour == TiffColour::cmyk;
  for (std::size_t c = 0; c < colours; ++c) {
    if (isInk && directory_.alpha == TiffAlpha::straight)
      colour[c] = static_cast<std::uint16_t>((std::uint32_t{colour[c]} * alpha + kFull / 2) / kFull);
    if (!isInk && directory_.alpha == TiffAlpha::premultiplied)
      colour[c] = alpha == 0 ? std::uint16_t{0} : word(double(colour[c]) / alpha);
  }
  if (directory_.photometry == PHOTOMETRIC_MINISWHITE)
    colour[0] = static_cast<std::uint16_t>(kFull - colour[0]);
  return colour;
}

/// Beside numbers that are kept as they are, alpha is one too.
std::uint16_t TiffPixels::alphaOf(std::uint16_t stored) const {
  if (directory_.colour != TiffColour::palette && directory_.colour != TiffColour::lab) return stored;
  return word(stored / double((1u << directory_.bits) - 1));
}

TiffPixels::Colour TiffPixels::colourOfReals(const float* samples) const {
  std::array<double, 4> value{};
  std::copy_n(samples, directory_.colours(), value.begin());
  const bool isInk = directory_.colour == TiffColour::cmyk;
  const double alpha = directory_.alpha == TiffAlpha::none ? 1 : clamped(samples[directory_.alphaSample]);
  for (double& part : value) {
    if (isInk && directory_.alpha == TiffAlpha::straight) part *= alpha;
    if (!isInk && directory_.alpha == TiffAlpha::premultiplied) part = alpha > 0 ? part / alpha : 0;
  }
  if (directory_.photometry == PHOTOMETRIC_LOGLUV) {
    // BT.709's primaries under a white of equal energy, in which such files are made.
    const auto [x, y, z, unused] = value;
    value = {2.690 * x - 1.276 * y - 0.414 * z, -1.022 * x + 1.978 * y + 0.044 * z,
             0.061 * x - 0.224 * y + 1.163 * z, unused};
  }
  if (directory_.photometry == PHOTOMETRIC_MINISWHITE) value[0] = 1 - clamped(value[0]);
  Colour colour{};
  for (std::size_t c = 0; c < colour.size(); ++c)
    colour[c] = word(storedAsMeant_ || isInk ? value[c] : srgbValueOfLight(value[c]));
  return colour;
}

void TiffPixels::put(const Colour& colour, std::uint16_t alpha, std::uint8_t* to) const {
  const std::size_t components = layout_.bitsPerPixel / layout_.bitsPerComponent;
  Colour pixel = colour;
  if (layout_.model != CGColorSpaceModel::cmyk && components % 2 == 0) pixel[components - 1] = alpha;
  if (layout_.bitsPerComponent == 16) return void(std::memcpy(to, pixel.data(), components * 2));
  for (std::size_t c = 0; c < components; ++c) to[c] = byte(pixel[c]);
}

void TiffPixels::write(const std::vector<TiffBlock>& blocks, std::uint32_t rowInBand, std::uint8_t* to) {
  const bool copied = isCopied(), isReal = directory_.isReal();
  for (const TiffBlock& block : blocks) {
    const std::uint8_t* const row = block.bytes.data() + rowInBand * block.bytesPerRow;
    if (copied) {
      directory_.bits == 8 ? copy<std::uint8_t>(block, row, to) : copy<std::uint16_t>(block, row, to);
    } else {
      isReal ? collectReals(block, row) : collectIntegers(block, row);
    }
  }
  if (copied) return;
  const bool hasAlpha = keepsAlpha();
  for (std::size_t x = 0; x < directory_.width; ++x, to += layout_.bitsPerPixel / 8u) {
    const std::size_t at = x * directory_.samples;
    if (isReal) {
      const float* samples = realRow_.data() + at;
      put(colourOfReals(samples), hasAlpha ? word(samples[directory_.alphaSample]) : kFull, to);
    } else {
      const std::uint16_t* samples = row_.data() + at;
      put(colourOfIntegers(samples), hasAlpha ? alphaOf(samples[directory_.alphaSample]) : kFull, to);
    }
  }
}

}  // namespace ostra
