#include "platform/imageio/codecs/picture_tree.h"

#include <cmath>
#include <string>

#include "platform/imageio/profile_space.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

const char* nameOfModel(CGColorSpaceModel model) {
  switch (model) {
    case CGColorSpaceModel::monochrome:
      return "Gray";
    case CGColorSpaceModel::cmyk:
      return "CMYK";
    default:
      return "RGB";
  }
}

// Numbers for gamma and primaries are a statement too, but nobody gave them a name.
bool hasName(const ProfileRecord& profile) {
  return std::holds_alternative<NamedSpace>(profile) || std::holds_alternative<IccProfile>(profile);
}

}  // namespace

Dictionary pictureTree(const PictureFacts& facts, const ProfileRecord& profile) {
  Dictionary tree;
  tree.emplace(kCGImagePropertyPixelWidth, std::int64_t{facts.width});
  tree.emplace(kCGImagePropertyPixelHeight, std::int64_t{facts.height});
  tree.emplace(kCGImagePropertyDepth, std::int64_t{facts.depth});
  tree.emplace(kCGImagePropertyColorModel, nameOfModel(facts.model));
  if (facts.hasAlpha) tree.emplace(kCGImagePropertyHasAlpha, true);
  if (facts.isIndexed) tree.emplace(kCGImagePropertyIsIndexed, true);
  if (!hasName(profile)) return tree;
  const CGColorSpaceRef space = statedSpace(profile, facts.model);
  if (space != nullptr && !space->profileDescription().empty())
    tree.emplace(kCGImagePropertyProfileName, space->profileDescription());
  return tree;
}

double roundedDensity(double dotsPerInch, double step) {
  const double whole = std::round(dotsPerInch);
  return std::abs(dotsPerInch - whole) <= step / 2 ? whole : dotsPerInch;
}

}  // namespace ostra
