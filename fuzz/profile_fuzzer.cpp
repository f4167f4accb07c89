#include <cstdlib>

#include "platform/graphics/bitmap_context.h"
#include "platform/imageio/codecs/written_profile.h"
#include "platform/imageio/profile_space.h"

// A profile that came with a picture: the check of its header and tags, the making of its space, a few pixels
// out of it and into it at every depth, and its bytes once more for a written file.

namespace ostra {
namespace {

constexpr std::size_t kPixels = 6;

std::size_t componentsOf(CGColorSpaceModel model) {
  return model == CGColorSpaceModel::monochrome ? 1 : model == CGColorSpaceModel::cmyk ? 4 : 3;
}

CGImageRef pictureOf(const CGColorSpaceRef& space, std::size_t bits, CGImageAlphaInfo alpha) {
  const std::size_t samples = componentsOf(space->model()) + (alpha == CGImageAlphaInfo::none ? 0 : 1);
  Bytes bytes(kPixels * samples * bits / 8);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * 51);
  const CGBitmapInfo order = bits == 16 ? kCGBitmapByteOrder16Little : 0;
  const CGImage::Format format{
      kPixels, 1, bits, bits * samples, bytes.size(), static_cast<CGBitmapInfo>(alpha) | order};
  return CGImage::create(format, space, SharedBytes::adopt(std::move(bytes)), false,
                         CGColorRenderingIntent::standard);
}

void draw(const CGImageRef& picture, const CGColorSpaceRef& space, std::size_t bits) {
  CGBitmapInfo info = bits == 16 ? kCGBitmapByteOrder16Little : 0;
  if (space->model() == CGColorSpaceModel::rgb)
    info |= static_cast<CGBitmapInfo>(CGImageAlphaInfo::premultipliedLast);
  const auto surface = CGBitmapContext::create(kPixels, 1, bits, 0, space, info);
  if (surface && picture) surface->drawImage({0, 0, kPixels, 1}, *picture);
}

void convertBothWays(const CGColorSpaceRef& space) {
  for (const auto name : {kCGColorSpaceSRGB, kCGColorSpaceGenericGrayGamma2_2}) {
    const auto other = CGColorSpace::createWithName(name);
    for (const std::size_t bits : {std::size_t{8}, std::size_t{16}}) {
      draw(pictureOf(space, bits, CGImageAlphaInfo::none), other, bits);
      if (space->model() != CGColorSpaceModel::cmyk)
        draw(pictureOf(space, bits, CGImageAlphaInfo::last), other, bits);
      draw(pictureOf(other, bits, CGImageAlphaInfo::none), space, bits);
    }
  }
}

void tryProfile(ByteView data) {
  const ProfileRecord record = IccProfile{Bytes(data.begin(), data.end())};
  for (const auto model : {CGColorSpaceModel::monochrome, CGColorSpaceModel::rgb, CGColorSpaceModel::cmyk}) {
    const auto space = statedSpace(record, model);
    if (space == nullptr) continue;
    convertBothWays(space);
    const auto written = writtenProfile(record, model);
    // What was good enough to convert with must be good enough for the file that is written.
    if (!written || statedSpace(IccProfile{*written}, model) == nullptr) std::abort();
  }
}

}  // namespace
}  // namespace ostra

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ostra::tryProfile({data, size});
  return 0;
}
