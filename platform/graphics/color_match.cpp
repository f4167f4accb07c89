#include "platform/graphics/color_match.h"

#include <algorithm>
#include <deque>
#include <mutex>

#include "platform/graphics/color_space_contents.h"
#include "platform/graphics/device_cmyk.h"
#include "platform/graphics/matrix_kernel.h"
#include "platform/graphics/named_spaces.h"
#include "platform/graphics/pixel_copy.h"
#include "platform/graphics/profile_transform.h"
#include "platform/graphics/remembered_colors.h"

namespace ostra {
namespace {

class SameSpace final : public ColorMatch {
 public:
  void drawRow(const PixelFormat& picture, const std::uint8_t* from, const PixelFormat& surface,
               std::uint8_t* to, std::size_t count) const override {
    drawSameSpace(picture, from, surface, to, count);
  }
};

/// Which sides are CMYK by the plain formula. sRGB values stand behind it.
struct PlainSides {
  bool source = false, destination = false;
};

/// Rows in chunks: alpha, colours of the destination space, drawing.
class ChunkedMatch : public ColorMatch {
 public:
  ChunkedMatch(PlainSides plain, bool takesRows) : plain_(plain), takesRows_(takesRows) {}

  void drawRow(const PixelFormat& picture, const std::uint8_t* from, const PixelFormat& surface,
               std::uint8_t* to, std::size_t count) const final {
    const bool withAlpha = picture.alpha != AlphaKind::none;
    PixelChunk chunk;
    for (std::size_t done = 0; done < count; done += chunk.count) {
      chunk.count = std::min(PixelChunk::capacity, count - done);
      const std::uint8_t* const pixels = from + done * picture.bytesPerPixel();
      if (withAlpha) readAlpha(picture, pixels, chunk);
      convert(picture, pixels, chunk);
      drawChunk(chunk, withAlpha, surface, to + done * surface.bytesPerPixel());
    }
  }

 private:
  void convert(const PixelFormat& picture, const std::uint8_t* pixels, PixelChunk& chunk) const {
    if (takesRows_) {
      convertRow(picture, pixels, chunk);
    } else {
      readColors(picture, pixels, chunk);
      if (plain_.source) plainRGBFromCMYK(chunk);
      convertValues(chunk);
    }
    if (plain_.destination) plainCMYKFromRGB(chunk);
  }

  virtual void convertRow(const PixelFormat&, const std::uint8_t*, PixelChunk&) const {}
  virtual void convertValues(PixelChunk& chunk) const = 0;

  PlainSides plain_;
  bool takesRows_;
};

/// Profiles of curves on both sides.
class KernelMatch final : public ChunkedMatch {
 public:
  KernelMatch(std::shared_ptr<const MatrixKernel> kernel, PlainSides plain, SourceValues values)
      : ChunkedMatch(plain, values != SourceValues::between), kernel_(std::move(kernel)) {}

 private:
  void convertRow(const PixelFormat& picture, const std::uint8_t* pixels, PixelChunk& chunk) const override {
    kernel_->convertRow(picture, pixels, chunk);
  }
  void convertValues(PixelChunk& chunk) const override { kernel_->convertValues(chunk); }

  std::shared_ptr<const MatrixKernel> kernel_;
};

/// Everything else, by the colour library.
class TransformMatch final : public ChunkedMatch {
 public:
  TransformMatch(std::shared_ptr<const ProfileTransform> transform, PlainSides plain)
      : ChunkedMatch(plain, false), transform_(std::move(transform)) {}

 private:
  static constexpr std::size_t mostComponents = 4;
  using Words = std::array<std::uint16_t, mostComponents * PixelChunk::capacity>;

  void convertValues(PixelChunk& chunk) const override {
    const auto in = static_cast<std::size_t>(transform_->sourceComponents());
    const auto out = static_cast<std::size_t>(transform_->destinationComponents());
    Words source, destination;
    for (std::size_t c = 0; c < in; ++c)
      for (std::size_t i = 0; i < chunk.count; ++i)
        source[i * in + c] = static_cast<std::uint16_t>(chunk.color[c][i] * 65535.0f + 0.5f);
    RememberedColors* const memory = RememberedColors::ofThisThread();
    if (memory != nullptr) {
      memory->run(*transform_, source.data(), destination.data(), chunk.count);
    } else {
      transform_->run(source.data(), destination.data(), chunk.count);
    }
    for (std::size_t c = 0; c < out; ++c)
      for (std::size_t i = 0; i < chunk.count; ++i)
        chunk.color[c][i] = static_cast<float>(destination[i * out + c]) / 65535.0f;
  }

  std::shared_ptr<const ProfileTransform> transform_;
};

bool isDeviceCMYK(const CGColorSpace& space) { return space.name() == kCGColorSpaceDeviceCMYK; }

ByteView profileOf(const CGColorSpace& space) {
  return isDeviceCMYK(space) ? ByteView(systemCMYKProfile()) : space.iccData();
}

bool byPlainFormula(const CGColorSpace& space) { return profileOf(space).empty() && isDeviceCMYK(space); }

CGColorSpaceRef behindFormula(const CGColorSpaceRef& space) {
  return byPlainFormula(*space) ? namedSpace(kCGColorSpaceSRGB) : space;
}

SourceValues valuesOf(const PixelFormat& picture, bool plainCMYK) {
  if (plainCMYK || picture.alpha == AlphaKind::premultiplied || picture.colors == 0)
    return SourceValues::between;
  return picture.bytesPerComponent == 1 ? SourceValues::bytes : SourceValues::words;
}

std::shared_ptr<const ColorMatch> makeMatch(const CGColorSpaceRef& source, const CGColorSpaceRef& destination,
                                            CGColorRenderingIntent intent, SourceValues values) {
  if (sameSpace(*source, *destination)) return std::make_shared<SameSpace>();
  const CGColorSpaceRef from = behindFormula(source), to = behindFormula(destination);
  const PlainSides plain{from != source, to != destination};
  const auto& start = from->contents().shaper;
  const auto& end = to->contents().shaper;
  if (start && end && intent != CGColorRenderingIntent::absoluteColorimetric) {
    auto kernel = MatrixKernel::create(*start, *end, values);
    return kernel ? std::make_shared<KernelMatch>(std::move(kernel), plain, values) : nullptr;
  }
  auto transform = ProfileTransform::create(profileOf(*from), profileOf(*to), intent);
  return transform ? std::make_shared<TransformMatch>(std::move(transform), plain) : nullptr;
}

/// The last few matches: a batch of small pictures must not build the same tables for each.
class RecentMatches {
 public:
  struct Key {
    CGColorSpaceRef source, destination;
    CGColorRenderingIntent intent;
    SourceValues values;

    bool equals(const Key& other) const {
      return intent == other.intent && values == other.values && sameSpace(*source, *other.source) &&
             sameSpace(*destination, *other.destination);
    }
  };

  std::shared_ptr<const ColorMatch> find(const Key& key) {
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [&](const Entry& entry) { return entry.key.equals(key); });
    if (found == entries_.end()) return nullptr;
    std::rotate(entries_.begin(), found, found + 1);
    return entries_.front().match;
  }

  void remember(Key key, std::shared_ptr<const ColorMatch> match) {
    const std::lock_guard lock(mutex_);
    entries_.push_front({std::move(key), std::move(match)});
    if (entries_.size() > capacity) entries_.pop_back();
  }

 private:
  struct Entry {
    Key key;
    std::shared_ptr<const ColorMatch> match;
  };
  static constexpr std::size_t capacity = 8;
  std::mutex mutex_;
  std::deque<Entry> entries_;
};

RecentMatches& recentMatches() {
  static RecentMatches matches;
  return matches;
}

}  // namespace

std::shared_ptr<const ColorMatch> ColorMatch::between(const CGColorSpaceRef& source,
                                                      const CGColorSpaceRef& destination,
                                                      CGColorRenderingIntent intent,
                                                      const PixelFormat& picture) {
  const SourceValues values = valuesOf(picture, byPlainFormula(*source));
  const RecentMatches::Key key{source, destination, intent, values};
  if (auto recent = recentMatches().find(key)) return recent;
  auto match = makeMatch(source, destination, intent, values);
  if (match) recentMatches().remember(key, match);
  return match;
}

CGColorSpaceRef defaultSpace(std::size_t colors) {
  if (colors <= 1) return namedSpace(kCGColorSpaceGenericGrayGamma2_2);
  return namedSpace(colors == 4 ? kCGColorSpaceDeviceCMYK : kCGColorSpaceSRGB);
}

}  // namespace ostra
