#include "platform/imageio/codecs/jpeg_settings.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

constexpr double kFullColourQuality = 0.9;

std::optional<double> numberAt(const Dictionary& tree, std::string_view key) {
  const auto found = tree.find(key);
  return found == tree.end() ? std::nullopt : found->second.number();
}

std::uint16_t densityWord(double value) {
  return static_cast<std::uint16_t>(std::clamp(std::round(value), 1.0, 65535.0));
}

void setDensity(JpegSettings& settings, const Dictionary& tree, const Dictionary& jfif,
                const Carrier* carrier) {
  if (const auto density = statedDensity(tree)) {
    // The file's own numbers, where the tree says nothing else: a density a centimetre is no whole number an
    // inch.
    const auto old = statedDensity({{std::string(kCGImagePropertyJFIFDictionary), jfif}});
    const bool same = old && old->x == density->x && old->y == density->y;
    if (same && numberAt(jfif, "DensityUnit") == 2) {
      settings.densityUnit = 2;
      settings.xDensity = densityWord(*numberAt(jfif, "XDensity"));
      settings.yDensity = densityWord(*numberAt(jfif, "YDensity"));
      return;
    }
    settings.densityUnit = 1;
    settings.xDensity = densityWord(density->x);
    settings.yDensity = densityWord(density->y);
    return;
  }
  auto x = numberAt(jfif, "XDensity"), y = numberAt(jfif, "YDensity");
  if (carrier != nullptr && carrier->pixelAspect) x = carrier->pixelAspect->x, y = carrier->pixelAspect->y;
  if (!x || !y || *x < 1 || *y < 1) return;
  settings.xDensity = densityWord(*x);
  settings.yDensity = densityWord(*y);
}

}  // namespace

JpegSettings jpegSettings(const Properties* properties) {
  JpegSettings settings;
  if (properties == nullptr) return settings;
  const Dictionary& tree = properties->tree;
  settings.quality = numberAt(tree, kCGImageDestinationLossyCompressionQuality).value_or(settings.quality);
  settings.fullColour = settings.quality >= kFullColourQuality;
  const auto found = tree.find(kCGImagePropertyJFIFDictionary);
  const auto* jfif = found == tree.end() ? nullptr : found->second.get<Dictionary>();
  setDensity(settings, tree, jfif != nullptr ? *jfif : Dictionary(), properties->carrier.get());
  return settings;
}

}  // namespace ostra
