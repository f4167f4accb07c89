#include "platform/imageio/modules/jpeg2000/jp2_written_boxes.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/bmff_boxes.h"
#include "platform/imageio/codecs/written_profile.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/modules/jpeg2000/jp2_marks.h"

namespace ostra {
namespace {

void append(Bytes& bytes, ByteView more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

void append16(Bytes& bytes, unsigned value) {
  bytes.push_back(static_cast<std::uint8_t>(value >> 8));
  bytes.push_back(static_cast<std::uint8_t>(value));
}

void appendBox(Bytes& bytes, std::uint32_t type, ByteView content) {
  appendBigEndian32(bytes, static_cast<std::uint32_t>(content.size() + 8));
  appendBigEndian32(bytes, type);
  append(bytes, content);
}

// A box beyond 4 GB no reader would take.
bool appendMarked(Bytes& bytes, const Jp2Mark& mark, ByteView block) {
  if (block.empty()) return true;
  if (block.size() > std::numeric_limits<std::uint32_t>::max() - 64) return false;
  Bytes content(mark.begin(), mark.end());
  append(content, block);
  appendBox(bytes, bmffType("uuid"), content);
  return true;
}

// The version is 0, and the type is one of its own compatible ones.
Bytes fileType() {
  Bytes content;
  appendBigEndian32(content, bmffType("jp2 "));
  appendBigEndian32(content, 0);
  appendBigEndian32(content, bmffType("jp2 "));
  return content;
}

Bytes header(const Layout& layout, unsigned channels) {
  constexpr std::uint8_t kWavelets = 7;
  Bytes content;
  appendBigEndian32(content, layout.height);
  appendBigEndian32(content, layout.width);
  append16(content, channels);
  append(content, Bytes{static_cast<std::uint8_t>(layout.bitsPerComponent - 1), kWavelets, 0, 0});
  return content;
}

// The spaces that have a number, which a reader without colour management knows; untagged pixels mean them.
std::uint32_t enumeratedSpace(const ProfileRecord& profile, CGColorSpaceModel model) {
  constexpr std::uint32_t kSrgb = 16, kGray = 17;
  const bool isGray = model == CGColorSpaceModel::monochrome;
  if (std::holds_alternative<Untagged>(profile)) return isGray ? kGray : kSrgb;
  const auto* named = std::get_if<NamedSpace>(&profile);
  if (named == nullptr) return 0;
  if (named->name == kCGColorSpaceSRGB) return isGray ? kGray : kSrgb;
  return isGray && named->name == kCGColorSpaceGenericGrayGamma2_2 ? kGray : 0;
}

std::optional<Bytes> colour(const Pixels& pixels) {
  constexpr std::uint8_t kEnumerated = 1, kProfile = 2;
  if (const std::uint32_t number = enumeratedSpace(pixels.profile, pixels.layout.model); number != 0) {
    Bytes content = {kEnumerated, 0, 0};
    appendBigEndian32(content, number);
    return content;
  }
  const auto profile = writtenProfile(pixels.profile, pixels.layout.model);
  if (!profile || profile->empty()) return std::nullopt;
  Bytes content = {kProfile, 0, 0};
  append(content, *profile);
  return content;
}

// What each channel is: colours in their order, then the opacity of them all.
Bytes definitions(unsigned channels) {
  constexpr unsigned kColour = 0, kOpacity = 1, kWholePicture = 0;
  Bytes content;
  append16(content, channels);
  for (unsigned i = 0; i < channels; ++i) {
    const bool isAlpha = i + 1 == channels;
    append16(content, i);
    append16(content, isAlpha ? kOpacity : kColour);
    append16(content, isAlpha ? kWholePicture : i + 1);
  }
  return content;
}

/// Dots a metre as a fraction of two numbers and a power of ten. 254 below makes whole densities exact.
struct Fraction {
  unsigned above = 0, below = 254;
  int power = 4;

  explicit Fraction(double dotsPerInch) {
    constexpr double kMost = 65535, kGoodEnough = 1e-7;
    double scaled = dotsPerInch;
    for (; scaled > kMost; ++power) scaled /= 10;
    while (scaled * 10 <= kMost && std::abs(scaled - std::round(scaled)) > scaled * kGoodEnough) {
      scaled *= 10;
      --power;
    }
    above = static_cast<unsigned>(std::max(1.0, std::round(scaled)));
  }
};

Bytes resolution(const Density& density) {
  const Fraction down(density.y), across(density.x);
  Bytes content;
  for (const Fraction& fraction : {down, across}) {
    append16(content, fraction.above);
    append16(content, fraction.below);
  }
  content.push_back(static_cast<std::uint8_t>(down.power));
  content.push_back(static_cast<std::uint8_t>(across.power));
  Bytes shown;
  appendBox(shown, bmffType("resd"), content);
  return shown;
}

std::optional<Bytes> headerBoxes(const Pixels& pixels, bool hasAlpha, const Properties* properties) {
  const unsigned colours = pixels.layout.model == CGColorSpaceModel::monochrome ? 1 : 3;
  const unsigned channels = colours + (hasAlpha ? 1 : 0);
  const auto colr = colour(pixels);
  if (!colr) return std::nullopt;
  Bytes boxes;
  appendBox(boxes, bmffType("ihdr"), header(pixels.layout, channels));
  appendBox(boxes, bmffType("colr"), *colr);
  if (hasAlpha) appendBox(boxes, bmffType("cdef"), definitions(channels));
  const auto density = properties != nullptr ? statedDensity(properties->tree) : std::nullopt;
  if (density) appendBox(boxes, bmffType("res "), resolution(*density));
  return boxes;
}

}  // namespace

std::optional<Jp2WrittenBoxes> jp2BoxesToWrite(const Pixels& pixels, bool hasAlpha,
                                               const Properties* properties) {
  const auto header = headerBoxes(pixels, hasAlpha, properties);
  if (!header) return std::nullopt;
  Jp2WrittenBoxes boxes;
  appendBox(boxes.before, bmffType("jP  "), Bytes{0x0D, 0x0A, 0x87, 0x0A});
  appendBox(boxes.before, bmffType("ftyp"), fileType());
  appendBox(boxes.before, bmffType("jp2h"), *header);
  if (properties != nullptr) {
    auto blocks = writeMetadata(*properties, {pixels.layout.width, pixels.layout.height});
    if (!blocks || !appendMarked(boxes.before, kJp2Exif, blocks->exif) ||
        !appendMarked(boxes.before, kJp2Xmp, blocks->xmp) ||
        !appendMarked(boxes.before, kJp2Iptc, blocks->iptc) ||
        !appendMarked(boxes.before, kJp2Photoshop, blocks->photoshopResources))
      return std::nullopt;
    boxes.comments = std::move(blocks->comments);
  }
  appendBox(boxes.before, bmffType("jp2c"), {});
  return boxes;
}

}  // namespace ostra
