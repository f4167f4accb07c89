#include "platform/graphics/library_profile.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/graphics/library_memory.h"

namespace ostra {
namespace {

// A profile of version 4 under the perceptual intent has its black point matched to that of the reference
// medium. Curves and a matrix have no perceptual table that this could be meant for.
constexpr double versionWithoutBlackPointRule = 2.4;

struct FreeCurve {
  void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};
using Curve = std::unique_ptr<cmsToneCurve, FreeCurve>;

cmsContext library() { return static_cast<cmsContext>(colorLibrary()); }

Curve curveOf(const ToneCurve& curve) {
  if (curve.table.empty()) {
    constexpr cmsInt32Number powerWithToe = 4;  // ICC.1 parametric form 3
    const cmsFloat64Number parameters[] = {curve.g, curve.a, curve.b, curve.c, curve.d};
    return Curve(cmsBuildParametricToneCurve(library(), powerWithToe, parameters));
  }
  std::vector<cmsUInt16Number> words(curve.table.size());
  std::transform(curve.table.begin(), curve.table.end(), words.begin(),
                 [](double light) { return static_cast<cmsUInt16Number>(std::lround(light * 65535)); });
  return Curve(
      cmsBuildTabulatedToneCurve16(library(), static_cast<cmsUInt32Number>(words.size()), words.data()));
}

bool writeCurves(cmsHPROFILE profile, const Shaper& shaper) {
  constexpr cmsTagSignature gray[] = {cmsSigGrayTRCTag};
  constexpr cmsTagSignature colors[] = {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};
  const cmsTagSignature* const tags = shaper.components == 1 ? gray : colors;
  for (std::size_t i = 0; i < static_cast<std::size_t>(shaper.components); ++i) {
    const Curve curve = curveOf(shaper.curves[i]);
    if (!curve || !cmsWriteTag(profile, tags[i], curve.get())) return false;
  }
  return true;
}

bool writeColorants(cmsHPROFILE profile, const Matrix3& toXYZ) {
  constexpr cmsTagSignature tags[] = {cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag};
  for (std::size_t i = 0; i < 3; ++i) {
    const cmsCIEXYZ colorant = {toXYZ[0][i], toXYZ[1][i], toXYZ[2][i]};
    if (!cmsWriteTag(profile, tags[i], &colorant)) return false;
  }
  return true;
}

}  // namespace

LibraryProfile libraryProfileOf(ByteView icc) {
  return LibraryProfile(
      cmsOpenProfileFromMemTHR(library(), icc.data(), static_cast<cmsUInt32Number>(icc.size())));
}

LibraryProfile libraryProfileOf(const Shaper& shaper) {
  LibraryProfile profile(cmsCreateProfilePlaceholder(library()));
  if (!profile) return nullptr;
  cmsSetProfileVersion(profile.get(), versionWithoutBlackPointRule);
  cmsSetDeviceClass(profile.get(), cmsSigDisplayClass);
  cmsSetColorSpace(profile.get(), shaper.components == 1 ? cmsSigGrayData : cmsSigRgbData);
  cmsSetPCS(profile.get(), cmsSigXYZData);
  const bool told = writeCurves(profile.get(), shaper) &&
                    (shaper.components == 1 || writeColorants(profile.get(), shaper.toXYZ));
  return told ? std::move(profile) : nullptr;
}

}  // namespace ostra
