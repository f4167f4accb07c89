#include <cmath>

#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/exif_block.h"
#include "platform/imageio/property_keys.h"

namespace ostra {

namespace {

constexpr double kCentimetresAnInch = 2.54;

std::optional<double> positive(const Dictionary& group, std::string_view key) {
  const auto found = group.find(key);
  const auto number = found == group.end() ? std::nullopt : found->second.number();
  return number && std::isfinite(*number) && *number > 0 ? number : std::nullopt;
}

/// Both numbers, either standing in for the other, times `factor`.
std::optional<Density> density(const Dictionary& group, std::string_view xKey, std::string_view yKey,
                               double factor) {
  const auto x = positive(group, xKey), y = positive(group, yKey);
  if (!x && !y) return std::nullopt;
  return Density{x.value_or(y.value_or(0)) * factor, y.value_or(x.value_or(0)) * factor};
}

/// Dots an inch that one dot a unit is; 0 for a unit that is no length.
double factorOf(const Dictionary& group, std::string_view key, int inch, int centimetre, int missing) {
  const auto found = group.find(key);
  const double unit = found == group.end() ? missing : found->second.number().value_or(0);
  if (unit == inch) return 1;
  return unit == centimetre ? kCentimetresAnInch : 0;
}

}  // namespace

std::optional<Density> statedDensity(const Dictionary& tree) {
  if (const auto top = density(tree, kCGImagePropertyDPIWidth, kCGImagePropertyDPIHeight, 1)) return top;
  const Dictionary& tiff = groupOf(tree, kCGImagePropertyTIFFDictionary);
  // TIFF 6.0: a missing unit is the inch. JFIF 1.02: a missing one is none.
  const double tiffFactor = factorOf(tiff, "ResolutionUnit", 2, 3, 2);
  if (tiffFactor > 0) {
    if (const auto stated = density(tiff, "XResolution", "YResolution", tiffFactor)) return stated;
  }
  const Dictionary& jfif = groupOf(tree, kCGImagePropertyJFIFDictionary);
  const double jfifFactor = factorOf(jfif, "DensityUnit", 1, 2, 0);
  return jfifFactor > 0 ? density(jfif, "XDensity", "YDensity", jfifFactor) : std::nullopt;
}

Properties withDensityInTiff(Properties properties) {
  const auto density = statedDensity(properties.tree);
  Dictionary tiff = groupOf(properties.tree, kCGImagePropertyTIFFDictionary);
  if (!density || tiff.contains("XResolution") || tiff.contains("YResolution")) return properties;
  tiff.insert_or_assign("XResolution", density->x);
  tiff.insert_or_assign("YResolution", density->y);
  tiff.insert_or_assign("ResolutionUnit", 2);
  properties.tree.insert_or_assign(std::string(kCGImagePropertyTIFFDictionary), std::move(tiff));
  return properties;
}

}  // namespace ostra
