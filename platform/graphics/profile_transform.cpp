#include "platform/graphics/profile_transform.h"

#include <atomic>
#include <utility>

#include <lcms2.h>

#include "platform/graphics/library_memory.h"
#include "platform/graphics/library_profile.h"
#include "platform/graphics/shaper.h"

namespace ostra {
namespace {

constexpr cmsUInt32Number exactly = cmsFLAGS_NOOPTIMIZE;

cmsContext library() { return static_cast<cmsContext>(colorLibrary()); }

struct DeleteTransform {
  void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using Profile = LibraryProfile;
using Transform = std::unique_ptr<void, DeleteTransform>;

cmsUInt32Number components(const Profile& profile) { return cmsChannelsOf(cmsGetColorSpace(profile.get())); }

cmsUInt32Number format16(const Profile& profile) {
  const int space = _cmsLCMScolorSpace(cmsGetColorSpace(profile.get()));
  return COLORSPACE_SH(static_cast<cmsUInt32Number>(space)) | CHANNELS_SH(components(profile)) | BYTES_SH(2);
}

/// Only the absolute intent asks for more than the numbers of a profile of curves.
Profile openProfile(ByteView icc, cmsUInt32Number intent) {
  const auto checked = CheckedProfile::of(icc);
  const auto shaper = checked ? Shaper::ofProfile(*checked) : std::nullopt;
  if (!shaper || intent == INTENT_ABSOLUTE_COLORIMETRIC) return libraryProfileOf(icc);
  return libraryProfileOf(*shaper);
}

cmsUInt32Number libraryIntent(CGColorRenderingIntent intent) {
  switch (intent) {
    case CGColorRenderingIntent::absoluteColorimetric:
      return INTENT_ABSOLUTE_COLORIMETRIC;
    case CGColorRenderingIntent::relativeColorimetric:
      return INTENT_RELATIVE_COLORIMETRIC;
    case CGColorRenderingIntent::saturation:
      return INTENT_SATURATION;
    case CGColorRenderingIntent::standard:
    case CGColorRenderingIntent::perceptual:
      break;
  }
  return INTENT_PERCEPTUAL;
}

bool convertsFrom(const Profile& profile) {
  const Profile lab(cmsCreateLab4ProfileTHR(library(), nullptr));
  if (!lab) return false;
  const Transform transform(cmsCreateTransformTHR(library(), profile.get(), format16(profile), lab.get(),
                                                  TYPE_Lab_16, INTENT_PERCEPTUAL, exactly));
  return transform != nullptr;
}

class LibraryTransform final : public ProfileTransform {
 public:
  LibraryTransform(Transform transform, cmsUInt32Number from, cmsUInt32Number to)
      : transform_(std::move(transform)), from_(static_cast<int>(from)), to_(static_cast<int>(to)) {}

  int sourceComponents() const override { return from_; }
  int destinationComponents() const override { return to_; }
  void run(const std::uint16_t* source, std::uint16_t* destination, std::size_t pixels) const override {
    cmsDoTransform(transform_.get(), source, destination, static_cast<cmsUInt32Number>(pixels));
  }

 private:
  Transform transform_;
  int from_, to_;
};

}  // namespace

ProfileTransform::ProfileTransform() {
  static std::atomic<std::uint64_t> made = 0;
  number_ = ++made;
}

bool libraryConvertsFrom(ByteView bytes) {
  const Profile profile = libraryProfileOf(bytes);
  return profile && convertsFrom(profile);
}

std::shared_ptr<const ProfileTransform> ProfileTransform::create(ByteView source, ByteView destination,
                                                                 CGColorRenderingIntent intent) {
  const auto chosen = libraryIntent(intent);
  const Profile from = openProfile(source, chosen);
  const Profile to = openProfile(destination, chosen);
  if (!from || !to) return nullptr;
  Transform transform(
      cmsCreateTransformTHR(library(), from.get(), format16(from), to.get(), format16(to), chosen, exactly));
  if (!transform) return nullptr;
  return std::make_shared<LibraryTransform>(std::move(transform), components(from), components(to));
}

}  // namespace ostra
