#include "platform/imageio/profile_space.h"

#include <algorithm>
#include <string>

namespace ostra {
namespace {

struct SpaceMaker {
  CGColorSpaceModel model;

  CGColorSpaceRef operator()(const Untagged&) const { return nullptr; }
  CGColorSpaceRef operator()(const NamedSpace& space) const {
    // An sRGB mark on gray pixels speaks of the curve.
    const bool grayCurve = model == CGColorSpaceModel::monochrome && space.name == kCGColorSpaceSRGB;
    return CGColorSpace::createWithName(grayCurve ? kCGColorSpaceGenericGrayGamma2_2 : space.name);
  }
  CGColorSpaceRef operator()(const Calibrated& space) const {
    const double white[2] = {space.white[0], space.white[1]};
    if (!space.primaries) return CGColorSpace::createCalibrated(white, nullptr, space.gamma);
    double primaries[6];
    std::copy(space.primaries->begin(), space.primaries->end(), primaries);
    return CGColorSpace::createCalibrated(white, &primaries, space.gamma);
  }
  CGColorSpaceRef operator()(const IccProfile& profile) const {
    return CGColorSpace::createWithICCData(profile.bytes);
  }
};

}  // namespace

CGColorSpaceRef statedSpace(const ProfileRecord& profile, CGColorSpaceModel model) {
  const CGColorSpaceRef space = std::visit(SpaceMaker{model}, profile);
  return space != nullptr && space->model() == model ? space : nullptr;
}

CGColorSpaceRef defaultSpace(CGColorSpaceModel model) {
  switch (model) {
    case CGColorSpaceModel::monochrome:
      return CGColorSpace::createWithName(kCGColorSpaceGenericGrayGamma2_2);
    case CGColorSpaceModel::rgb:
      return CGColorSpace::createWithName(kCGColorSpaceSRGB);
    case CGColorSpaceModel::cmyk:
      return CGColorSpace::createWithName(kCGColorSpaceDeviceCMYK);
    default:
      return nullptr;
  }
}

ProfileRecord profileOfSpace(const CGColorSpaceRef& space) {
  if (space == nullptr) return Untagged{};
  if (const auto name = space->name()) return NamedSpace{std::string(*name)};
  const ByteView profile = space->iccData();
  if (profile.empty()) return Untagged{};
  return IccProfile{Bytes(profile.begin(), profile.end())};
}

}  // namespace ostra
