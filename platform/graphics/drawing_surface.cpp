#include "platform/graphics/drawing_surface.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>

#include "platform/graphics/color_match.h"
#include "platform/graphics/row_threads.h"

namespace ostra {
namespace {

constexpr std::size_t pitchStep = 64;

/// Bytes of a row: as asked for, or padded; nothing when that cannot hold the pixels or the memory has no
/// such size.
std::optional<std::size_t> pitchFor(const CGImage::Format& format, const PixelFormat& pixel) {
  std::size_t least = 0, padded = 0, all = 0;
  if (__builtin_mul_overflow(format.width, pixel.bytesPerPixel(), &least) ||
      __builtin_add_overflow(least, pitchStep - 1, &padded))
    return std::nullopt;
  const std::size_t pitch = format.bytesPerRow == 0 ? padded / pitchStep * pitchStep : format.bytesPerRow;
  if (pitch < least || pitch % pixel.bytesPerComponent != 0) return std::nullopt;
  if (__builtin_mul_overflow(pitch, format.height, &all) || all > PTRDIFF_MAX) return std::nullopt;
  return pitch;
}

std::size_t edge(double position, std::size_t limit) {
  if (!(position > 0)) return 0;
  return position < static_cast<double>(limit) ? static_cast<std::size_t>(std::lround(position)) : limit;
}

}  // namespace

std::unique_ptr<CGBitmapContext> DrawingSurface::make(const CGImage::Format& wanted, CGColorSpaceRef space) {
  if (!space || wanted.width == 0 || wanted.height == 0) return nullptr;
  const auto pixel = surfacePixelFormat(space->model(), wanted.bitsPerComponent, wanted.bitmapInfo);
  const auto pitch = pixel ? pitchFor(wanted, *pixel) : std::nullopt;
  if (!pitch) return nullptr;
  SurfaceMemory memory = allocateSurface(*pitch * wanted.height);
  if (!memory) return nullptr;
  CGImage::Format format = wanted;
  format.bytesPerRow = *pitch;
  format.bitsPerPixel = 8 * pixel->bytesPerPixel();
  return std::make_unique<DrawingSurface>(format, *pixel, std::move(space), std::move(memory));
}

DrawingSurface::DrawingSurface(const CGImage::Format& format, const PixelFormat& pixel, CGColorSpaceRef space,
                               SurfaceMemory memory)
    : format_(format), pixel_(pixel), space_(std::move(space)), memory_(std::move(memory)) {}

std::uint8_t* DrawingSurface::data() {
  if (memory_ && background_)
    for (std::size_t y = 0; y < height(); ++y) paintRow(y, {0, y, width(), y + 1}, *background_);
  background_.reset();
  return memory_.get();
}

void DrawingSurface::setGrayFillColor(double gray, double alpha) {
  gray_ = gray > 0 ? std::min(gray, 1.0) : 0;
  alpha_ = alpha > 0 ? std::min(alpha, 1.0) : 0;
}

void DrawingSurface::fillRect(const CGRect& rect) {
  const Area area = covered(rect);
  if (!memory_) return;
  const PixelChunk color = fillChunk();
  if (alpha_ < 1) return blend(area, color);
  Pixel pixel{};
  drawChunk(color, false, pixel_, pixel.data());
  paint(area, pixel);
}

void DrawingSurface::clearRect(const CGRect& rect) {
  if (memory_) paint(covered(rect), Pixel{});
}

void DrawingSurface::drawImage(const CGRect& rect, const CGImage& image) {
  const bool covers = rect == CGRect{0, 0, static_cast<double>(width()), static_cast<double>(height())};
  if (!covers || image.width() != width() || image.height() != height()) return spoil();
  if (!memory_) return;
  try {
    draw(image);
  } catch (const std::exception&) {
    spoil();
  }
}

void DrawingSurface::draw(const CGImage& image) {
  const CGImage::Format format{image.width(),        image.height(),      image.bitsPerComponent(),
                               image.bitsPerPixel(), image.bytesPerRow(), image.bitmapInfo()};
  const auto picture = wholePixelFormat(format, image.colorSpace().get(), image.pixels().view);
  if (!picture) return spoil();
  const CGColorSpaceRef source = image.colorSpace() ? image.colorSpace() : defaultSpace(picture->colors);
  const auto match = ColorMatch::between(source, space_, image.renderingIntent(), *picture);
  if (!match) return spoil();
  const bool shows = picture->alpha != AlphaKind::none && background_;
  forBandsOfRows(height(), width(), [&](std::size_t first, std::size_t last) {
    for (std::size_t y = first; y < last; ++y) {
      if (shows) paintRow(y, {0, y, width(), y + 1}, *background_);
      match->drawRow(*picture, image.data() + y * format.bytesPerRow, pixel_, row(y), width());
    }
  });
  background_.reset();
}

CGImageRef DrawingSurface::takeImage() {
  if (data() == nullptr) return nullptr;
  const ByteView view(memory_.get(), format_.bytesPerRow * format_.height);
  SharedBytes pixels{std::shared_ptr<const void>(std::move(memory_)), view};
  return std::make_shared<CGImage>(format_, space_, std::move(pixels), CGColorRenderingIntent::standard);
}

DrawingSurface::Area DrawingSurface::covered(const CGRect& rect) const {
  const double tall = static_cast<double>(height());
  const Area area{edge(rect.x, width()), edge(tall - rect.y - rect.height, height()),
                  edge(rect.x + rect.width, width()), edge(tall - rect.y, height())};
  return {area.left, area.top, std::max(area.left, area.right), std::max(area.top, area.bottom)};
}

bool DrawingSurface::isAll(const Area& area) const {
  return area.left == 0 && area.top == 0 && area.right == width() && area.bottom == height();
}

void DrawingSurface::paintRow(std::size_t y, const Area& area, const Pixel& pixel) {
  const std::size_t size = pixel_.bytesPerPixel();
  std::uint8_t* const start = row(y) + area.left * size;
  const std::size_t bytes = (area.right - area.left) * size;
  if (std::all_of(pixel.begin(), pixel.begin() + static_cast<std::ptrdiff_t>(size),
                  [&](std::uint8_t byte) { return byte == pixel[0]; })) {
    std::memset(start, pixel[0], bytes);
  } else {
    for (std::size_t at = 0; at < bytes; at += size) std::memcpy(start + at, pixel.data(), size);
  }
}

void DrawingSurface::paint(const Area& area, const Pixel& pixel) {
  if (isAll(area)) {
    background_ = pixel;
    return;
  }
  data();
  for (std::size_t y = area.top; y < area.bottom; ++y) paintRow(y, area, pixel);
}

void DrawingSurface::blend(const Area& area, const PixelChunk& color) {
  data();
  PixelChunk chunk = color;
  for (std::size_t y = area.top; y < area.bottom; ++y)
    for (std::size_t x = area.left; x < area.right; x += chunk.count) {
      chunk.count = std::min(PixelChunk::capacity, area.right - x);
      drawChunk(chunk, true, pixel_, row(y) + x * pixel_.bytesPerPixel());
    }
}

/// One pixel's worth is counted; the planes are full of it. White is the absence of every ink.
PixelChunk DrawingSurface::fillChunk() const {
  PixelChunk chunk;
  const bool inks = pixel_.colors == 4;
  for (auto& plane : chunk.color) plane.fill(inks ? 0.0f : static_cast<float>(gray_));
  if (inks) chunk.color[3].fill(static_cast<float>(1 - gray_));
  chunk.alpha.fill(static_cast<float>(alpha_));
  chunk.count = 1;
  return chunk;
}

}  // namespace ostra
