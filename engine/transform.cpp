#include "engine/engine.h"
#include "engine/gray.h"
#include "engine/invert.h"
#include "front/error.h"

namespace ostra {
namespace {

bool isOpaque(const CGImage& image) {
  const CGImageAlphaInfo alpha = image.alphaInfo();
  return alpha == CGImageAlphaInfo::none || alpha == CGImageAlphaInfo::noneSkipLast ||
         alpha == CGImageAlphaInfo::noneSkipFirst;
}

CGImageRef convertToProfile(const CGImage& image, const CGColorSpaceRef& target,
                            const SurfaceFormat& format) {
  switch (target->model()) {
    case CGColorSpaceModel::rgb:
      return renderOnSurface(image, target, format);
    case CGColorSpaceModel::monochrome:
      return convertToGray(image, target, format);
    default:
      return nullptr;
  }
}

/// On white in the image's own space where a JPEG can hold that, else in sRGB.
CGImageRef flatten(const CGImageRef& image, bool wide) {
  if (isOpaque(*image)) return image;
  const CGColorSpaceRef& own = image->colorSpace();
  const CGColorSpaceModel model = own ? own->model() : CGColorSpaceModel::unknown;
  const bool ownWorks = model == CGColorSpaceModel::rgb || model == CGColorSpaceModel::monochrome;
  return renderOnSurface(*image, ownWorks ? own : requiredColorSpace(kCGColorSpaceSRGB),
                         {.keepAlpha = false, .wide = wide});
}

/// What is said when the kind's routine yields nothing.
std::string failureReason(OstraQuickActionKind kind) {
  switch (kind) {
    case OstraQuickActionKind::convertColorProfile:
      return "could not convert to the chosen profile (only RGB and gray profiles are supported).";
    case OstraQuickActionKind::grayscale:
    case OstraQuickActionKind::grayscaleJPEG:
      return "could not convert to grayscale.";
    case OstraQuickActionKind::sRGB:
    case OstraQuickActionKind::sRGBJPEG:
      return "could not convert to sRGB.";
    case OstraQuickActionKind::jpeg:
      return "could not flatten the image.";
    case OstraQuickActionKind::invert:
      return "could not invert the image.";
  }
  return {};
}

CGImageRef transform(const OstraQuickActionEngine& engine, const CGImageRef& image,
                     const SurfaceFormat& format) {
  switch (engine.kind()) {
    case OstraQuickActionKind::convertColorProfile:
      return convertToProfile(*image, engine.targetColorSpace(), format);
    case OstraQuickActionKind::grayscale:
    case OstraQuickActionKind::grayscaleJPEG:
      return convertToGray(*image, requiredColorSpace(kCGColorSpaceGenericGrayGamma2_2), format);
    case OstraQuickActionKind::sRGB:
    case OstraQuickActionKind::sRGBJPEG:
      return renderOnSurface(*image, requiredColorSpace(kCGColorSpaceSRGB), format);
    case OstraQuickActionKind::jpeg:
      return flatten(image, format.wide);
    case OstraQuickActionKind::invert:
      return invertImage(*image, format);
  }
  return nullptr;
}

}  // namespace

CGImageRef OstraQuickActionEngine::transformImage(const CGImageRef& image, bool keepAlpha,
                                                  const std::string& fileName) const {
  if (kind() == OstraQuickActionKind::convertColorProfile && !targetColorSpace()) {
    throw OstraQuickActionError(fileName, "no destination profile was chosen.");
  }
  const bool wide = image->bitsPerComponent() > 8;
  CGImageRef converted = transform(*this, image, {.keepAlpha = keepAlpha, .wide = wide});
  if (!converted) throw OstraQuickActionError(fileName, failureReason(kind()));
  return converted;
}

}  // namespace ostra
