#include "platform/imageio/codecs/heif_written.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "platform/imageio/codecs/heif_file.h"
#include "platform/imageio/codecs/written_profile.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

std::optional<double> numberAt(const Dictionary& tree, std::string_view key) {
  const auto found = tree.find(key);
  return found == tree.end() ? std::nullopt : found->second.number();
}

void readSettings(const Dictionary& tree, HeifWritten& written) {
  if (const auto quality = numberAt(tree, kCGImageDestinationLossyCompressionQuality))
    written.quality = static_cast<int>(std::lround(std::clamp(*quality, 0.0, 1.0) * 100));
  const double orientation = numberAt(tree, kCGImagePropertyOrientation).value_or(1);
  if (orientation >= 1 && orientation <= 8) written.orientation = static_cast<int>(orientation);
}

void readNumbers(const ProfileRecord& profile, HeifWritten& written) {
  const auto* space = std::get_if<NamedSpace>(&profile);
  if (space == nullptr) return;
  if (space->name == kCGColorSpaceSRGB || space->name == kCGColorSpaceGenericGrayGamma2_2)
    written.primaries = 1, written.transfer = 13;
  if (space->name == kCGColorSpaceDisplayP3) written.primaries = 12, written.transfer = 13;
}

}  // namespace

std::optional<HeifWritten> heifToWrite(const Pixels& pixels, const Properties* properties) {
  if (pixels.layout.model == CGColorSpaceModel::cmyk) return std::nullopt;
  HeifWritten written;
  auto profile = writtenProfile(pixels.profile, pixels.layout.model);
  if (!profile) return std::nullopt;
  written.profile = std::move(*profile);
  readNumbers(pixels.profile, written);
  if (properties == nullptr) return written;
  readSettings(properties->tree, written);
  auto blocks = writeMetadata(*properties, {pixels.layout.width, pixels.layout.height});
  if (!blocks) return std::nullopt;
  written.exif = std::move(blocks->exif);
  written.xmp = std::move(blocks->xmp);
  return written;
}

bool heifTells(ByteView file, const Pixels& pixels, const HeifWritten& written, bool alpha) {
  const auto heif = readHeifFile(file);
  if (!heif) return false;
  const HeifCrop& crop = heif->transforms.crop;
  const bool gray = pixels.layout.model == CGColorSpaceModel::monochrome;
  return crop.width == pixels.layout.width && crop.height == pixels.layout.height &&
         heif->transforms.orientation == written.orientation && heif->isGray == gray &&
         heif->hasAlpha == alpha && heif->count == 1 &&
         std::equal(heif->icc.begin(), heif->icc.end(), written.profile.begin(), written.profile.end());
}

}  // namespace ostra
