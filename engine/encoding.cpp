#include <array>
#include <set>

#include "engine/engine.h"
#include "front/error.h"
#include "platform/imageio/image_destination.h"
#include "platform/imageio/property_keys.h"
#include "platform/types/ut_type.h"

namespace ostra {
namespace {

/// What describes the pixels and the file that are being replaced. Top level only: what a group says about
/// the camera's picture stays true.
constexpr std::array<std::string_view, 13> strippedPropertyKeys{
    kCGImagePropertyPixelWidth,
    kCGImagePropertyPixelHeight,
    kCGImagePropertyDepth,
    kCGImagePropertyHasAlpha,
    kCGImagePropertyColorModel,
    kCGImagePropertyProfileName,
    kCGImagePropertyIsIndexed,
    kCGImagePropertyIsFloat,
    kCGImagePropertyPNGDictionary,
    kCGImagePropertyFileSize,
    kCGImagePropertyFileContentsDictionary,
    kCGImagePropertyPrimaryImage,
    kCGImagePropertyImageCount,
};

/// The output types that get a compression quality, compared exactly.
const std::set<std::string, std::less<>>& lossyTypeIdentifiers() {
  static const std::set<std::string, std::less<>> identifiers{
      UTType::jpeg().identifier(), UTType::heic().identifier(), UTType::heif().identifier(), "public.avif"};
  return identifiers;
}

void removeExifColorSpace(Dictionary& tree) {
  const auto entry = tree.find(kCGImagePropertyExifDictionary);
  if (entry == tree.end()) return;
  auto* exif = entry->second.get<Dictionary>();
  if (exif == nullptr) return;
  if (const auto colorSpace = exif->find(kCGImagePropertyExifColorSpace); colorSpace != exif->end()) {
    exif->erase(colorSpace);
  }
}

void setQuality(Dictionary& tree, std::string_view uti, double quality) {
  if (lossyTypeIdentifiers().count(uti) == 0) return;
  tree.insert_or_assign(std::string(kCGImageDestinationLossyCompressionQuality), Value(quality));
}

std::optional<Bytes> encodeImage(const CGImageRef& image, std::string_view uti,
                                 const Properties& properties) {
  Bytes data;
  const auto destination = CGImageDestination::createWithData(data, uti, 1);
  if (!destination) return std::nullopt;
  destination->addImage(image, properties.empty() ? nullptr : &properties);
  if (!destination->finalize()) return std::nullopt;
  return data;
}

}  // namespace

Properties OstraQuickActionEngine::destinationProperties(CGImageSource& source, std::string_view uti) const {
  Properties properties = source.copyPropertiesAtIndex(0).value_or(Properties{});
  for (const std::string_view key : strippedPropertyKeys) properties.remove(key);
  removeExifColorSpace(properties.tree);
  setQuality(properties.tree, uti, lossyQuality());
  return properties;
}

Bytes OstraQuickActionEngine::encodeWithRetry(const CGImageRef& image, const std::string& uti,
                                              const Properties& properties,
                                              const std::string& fileName) const {
  std::optional<Bytes> data = encodeImage(image, uti, properties);
  if (!data) {
    // A picture without its metadata is better than none. Nothing of the carrier comes along.
    Properties bare;
    setQuality(bare.tree, uti, lossyQuality());
    data = encodeImage(image, uti, bare);
  }
  if (!data) throw OstraQuickActionError(fileName, "the " + uti + " writer failed.");
  return *std::move(data);
}

}  // namespace ostra
