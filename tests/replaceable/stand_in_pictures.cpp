#include <algorithm>

#include "platform/imageio/limits.h"
#include "tests/doubles/graphics_creation.h"
#include "tests/doubles/image_destination.h"
#include "tests/doubles/image_source.h"
#include "tests/replaceable/stand_in.h"

namespace ostra {

namespace {
test::RecordingGraphicsCreation& graphics() { return test::standIn<test::RecordingGraphicsCreation>(); }
}  // namespace

std::optional<std::uint64_t> checkedProduct(std::uint64_t a, std::uint64_t b, std::uint64_t c) {
  return a * b * c;
}

SharedBytes SharedBytes::adopt(Bytes bytes) {
  const auto owner = std::make_shared<const Bytes>(std::move(bytes));
  return {owner, *owner};
}

// A space is its model: gray for the one gray name, RGB for the others.

struct CGColorSpace::Contents {
  CGColorSpaceModel model;
};
CGColorSpace::CGColorSpace(std::unique_ptr<Contents> contents) : contents_(std::move(contents)) {}
CGColorSpace::~CGColorSpace() = default;
CGColorSpaceModel CGColorSpace::model() const { return contents_->model; }
CGColorSpaceRef CGColorSpace::createWithName(std::string_view name) {
  const bool gray = name == kCGColorSpaceGenericGrayGamma2_2;
  return std::make_shared<const CGColorSpace>(
      std::make_unique<Contents>(Contents{gray ? CGColorSpaceModel::monochrome : CGColorSpaceModel::rgb}));
}
/// Of a profile that is only the name of its model.
CGColorSpaceRef CGColorSpace::createWithICCData(ByteView data) {
  const bool gray = std::ranges::equal(data, std::string_view("gray"));
  return createWithName(gray ? kCGColorSpaceGenericGrayGamma2_2 : kCGColorSpaceSRGB);
}
GraphicsCreation& GraphicsCreation::standard() { return graphics(); }

CGImage::CGImage(const Format& format, CGColorSpaceRef space, SharedBytes provider,
                 CGColorRenderingIntent intent)
    : format_(format), space_(std::move(space)), pixels_(std::move(provider)), intent_(intent) {}
CGImageAlphaInfo CGImage::alphaInfo() const {
  return static_cast<CGImageAlphaInfo>(format_.bitmapInfo & kCGBitmapAlphaInfoMask);
}
CGImageRef CGImage::create(const Format& format, CGColorSpaceRef space, SharedBytes provider,
                           bool shouldInterpolate, CGColorRenderingIntent intent) {
  return graphics().image(format, std::move(space), std::move(provider), shouldInterpolate, intent);
}

std::unique_ptr<CGBitmapContext> CGBitmapContext::create(std::size_t width, std::size_t height,
                                                         std::size_t bitsPerComponent,
                                                         std::size_t bytesPerRow, CGColorSpaceRef space,
                                                         CGBitmapInfo bitmapInfo) {
  return graphics().bitmapContext(width, height, bitsPerComponent, bytesPerRow, std::move(space), bitmapInfo);
}
CGImageRef CGBitmapContext::createImage(std::unique_ptr<CGBitmapContext> context) {
  return context->takeImage();
}

// Properties are a tree without a carrier.

bool Properties::remove(std::string_view key) {
  const auto found = tree.find(key);
  if (found == tree.end()) return false;
  tree.erase(found);
  return true;
}
bool Properties::empty() const { return tree.empty(); }

std::unique_ptr<CGImageSource> CGImageSource::createWithURL(const URL& url,
                                                            const CGImageSourceOptions& options) {
  return test::standIn<test::RecordingImageSourceOpening>().open(url, options);
}
std::optional<std::vector<std::string>> CGImageDestinationCopyTypeIdentifiers() {
  return test::standIn<test::RecordingImageDestinationCreation>().typeIdentifiers();
}
std::unique_ptr<CGImageDestination> CGImageDestination::createWithData(Bytes& data,
                                                                       std::string_view typeIdentifier,
                                                                       std::size_t count) {
  return test::standIn<test::RecordingImageDestinationCreation>().create(data, typeIdentifier, count);
}

}  // namespace ostra
