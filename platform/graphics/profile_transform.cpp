#include "platform/graphics/profile_transform.h"

#include <lcms2.h>

#include <utility>
#include <vector>

#include "platform/graphics/shaper.h"

namespace ostra {
namespace {

constexpr cmsUInt32Number exactly = cmsFLAGS_NOOPTIMIZE;

/// Never freed: transforms of static lifetime refer to it.
cmsContext library() {
  static const cmsContext context = cmsCreateContext(nullptr, nullptr);
  return context;
}

struct CloseProfile {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
struct DeleteTransform {
  void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using Profile = std::unique_ptr<void, CloseProfile>;
using Transform = std::unique_ptr<void, DeleteTransform>;

Profile openProfile(ByteView bytes) {
  return Profile(cmsOpenProfileFromMemTHR(library(), bytes.data(), static_cast<cmsUInt32Number>(bytes.size())));
}

cmsUInt32Number components(const Profile& profile) { return cmsChannelsOf(cmsGetColorSpace(profile.get())); }

cmsUInt32Number format16(const Profile& profile) {
  const int space = _cmsLCMScolorSpace(cmsGetColorSpace(profile.get()));
  return COLORSPACE_SH(static_cast<cmsUInt32Number>(space)) | CHANNELS_SH(components(profile)) | BYTES_SH(2);
}

/// The library matches black points whenever a profile of version 4 meets the perceptual intent. A profile of curves
/// has no perceptual table, so that rule is not meant for it; told as version 2 it says the same without.
Profile openWithoutBlackPointRule(ByteView bytes, cmsUInt32Number intent) {
  Profile profile = openProfile(bytes);
  const auto checked = CheckedProfile::of(bytes);
  const bool curvesAlone = checked && Shaper::ofProfile(*checked);
  if (profile && curvesAlone && intent != INTENT_ABSOLUTE_COLORIMETRIC) cmsSetProfileVersion(profile.get(), 2.4);
  return profile;
}

cmsUInt32Number libraryIntent(CGColorRenderingIntent intent) {
  switch (intent) {
    case CGColorRenderingIntent::absoluteColorimetric: return INTENT_ABSOLUTE_COLORIMETRIC;
    case CGColorRenderingIntent::relativeColorimetric: return INTENT_RELATIVE_COLORIMETRIC;
    case CGColorRenderingIntent::saturation: return INTENT_SATURATION;
    case CGColorRenderingIntent::standard:
    case CGColorRenderingIntent::perceptual: break;
  }
  return INTENT_PERCEPTUAL;
}

bool convertsFrom(const Profile& profile) {
  const Profile lab(cmsCreateLab4ProfileTHR(library(), nullptr));
  if (!lab) return false;
  const Transform transform(cmsCreateTransformTHR(library(), profile.get(), format16(profile), lab.get(), TYPE_Lab_16,
                                                  INTENT_PERCEPTUAL, exactly));
  return transform != nullptr;
}

void appendUtf8(std::string& text, char32_t character) {
  const auto put = [&](char32_t bits) { text += static_cast<char>(bits); };
  const auto follow = [&](int shift) { put(0x80 | (character >> shift & 0x3F)); };
  if (character < 0x80) return put(character);
  if (character < 0x800) return put(0xC0 | character >> 6), follow(0);
  if (character >= 0xD800 && character < 0xE000) return;  // half of a pair that was not joined
  if (character < 0x10000) return put(0xE0 | character >> 12), follow(6), follow(0);
  if (character < 0x110000) return put(0xF0 | character >> 18), follow(12), follow(6), follow(0);
}

char32_t joinedPair(char32_t high, char32_t low) { return 0x10000 + ((high & 0x3FF) << 10) + (low & 0x3FF); }

/// The library hands UTF-16 out in wide characters, pairs unjoined.
std::string utf8(const std::vector<wchar_t>& wide) {
  std::string text;
  for (std::size_t i = 0; i < wide.size() && wide[i] != 0; ++i) {
    auto character = static_cast<char32_t>(wide[i]);
    const char32_t next = i + 1 < wide.size() ? static_cast<char32_t>(wide[i + 1]) : 0;
    if (character >> 10 == 0xD800 >> 10 && next >> 10 == 0xDC00 >> 10) {
      character = joinedPair(character, next);
      ++i;
    }
    appendUtf8(text, character);
  }
  return text;
}

std::string description(const Profile& profile) {
  const auto bytes = cmsGetProfileInfo(profile.get(), cmsInfoDescription, "en", "US", nullptr, 0);
  std::vector<wchar_t> text(bytes / sizeof(wchar_t) + 1);
  if (bytes > 0) cmsGetProfileInfo(profile.get(), cmsInfoDescription, "en", "US", text.data(), bytes);
  return utf8(text);
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

std::optional<std::string> descriptionIfUsable(ByteView bytes) {
  const Profile profile = openProfile(bytes);
  if (!profile || !convertsFrom(profile)) return std::nullopt;
  return description(profile);
}

std::shared_ptr<const ProfileTransform> ProfileTransform::create(ByteView source, ByteView destination,
                                                                 CGColorRenderingIntent intent) {
  const auto chosen = libraryIntent(intent);
  const Profile from = openWithoutBlackPointRule(source, chosen);
  const Profile to = openWithoutBlackPointRule(destination, chosen);
  if (!from || !to) return nullptr;
  Transform transform(cmsCreateTransformTHR(library(), from.get(), format16(from), to.get(), format16(to), chosen, exactly));
  if (!transform) return nullptr;
  return std::make_shared<LibraryTransform>(std::move(transform), components(from), components(to));
}

}  // namespace ostra
