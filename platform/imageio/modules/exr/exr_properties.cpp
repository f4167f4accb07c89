#include "platform/imageio/modules/exr/exr_properties.h"

#include <cmath>
#include <numeric>

#include <ImfFloatAttribute.h>
#include <ImfStringAttribute.h>

#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/exif_block.h"
#include "platform/imageio/metadata/text_encoding.h"
#include "platform/imageio/modules/exr/exr_decode.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

/// Attributes by name. Those that are not of the type that the name has by custom count as absent.
class Attributes {
 public:
  Attributes(const Imf::Header& header, std::size_t most) : header_(header), most_(most) {}

  std::string text(const char* name) const {
    const auto* const found = header_.findTypedAttribute<Imf::StringAttribute>(name);
    if (found == nullptr) return {};
    if (found->value().size() > most_) throw LimitExceeded{LimitName::metadataBytes};
    return found->value();
  }
  /// Nothing for an infinite number too, which stands for one that is not known or has no end.
  std::optional<double> number(const char* name) const {
    const auto* const found = header_.findTypedAttribute<Imf::FloatAttribute>(name);
    return found != nullptr && std::isfinite(found->value()) ? std::optional<double>(found->value())
                                                             : std::nullopt;
  }
  std::optional<double> positive(const char* name) const {
    const auto value = number(name);
    return value && *value > 0 ? value : std::nullopt;
  }

 private:
  const Imf::Header& header_;
  std::size_t most_;
};

void addText(Dictionary& group, const char* key, const std::string& text) {
  if (!text.empty()) group.emplace(key, utf8FromUnknown(text));
}

void addNumber(Dictionary& group, const char* key, std::optional<double> number) {
  if (number) group.emplace(key, *number);
}

Dictionary tiffGroup(const Attributes& attributes) {
  Dictionary group;
  addText(group, "Make", attributes.text("cameraMake"));
  addText(group, "Model", attributes.text("cameraModel"));
  return group;
}

Dictionary exifGroup(const Attributes& attributes) {
  constexpr double kMostIso = 65535;
  Dictionary group;
  addNumber(group, "ExposureTime", attributes.positive("expTime"));
  addNumber(group, "FNumber", attributes.positive("aperture"));
  const auto iso = attributes.positive("isoSpeed");
  if (iso && *iso <= kMostIso)
    group.emplace("ISOSpeedRatings", Array{Value(std::int64_t{std::lround(*iso)})});
  addNumber(group, "SubjectDistance", attributes.positive("focus"));
  const auto effective = attributes.positive("effectiveFocalLength");
  addNumber(group, "FocalLength", effective ? effective : attributes.positive("nominalFocalLength"));
  addText(group, "BodySerialNumber", attributes.text("cameraSerialNumber"));
  addText(group, "LensMake", attributes.text("lensMake"));
  addText(group, "LensModel", attributes.text("lensModel"));
  addText(group, "LensSerialNumber", attributes.text("lensSerialNumber"));
  return group;
}

void addDegrees(Dictionary& group, const char* key, std::optional<double> degrees, const char* references) {
  if (!degrees) return;
  group.emplace(key, std::abs(*degrees));
  group.emplace(std::string(key) + "Ref", std::string(1, references[*degrees < 0 ? 1 : 0]));
}

// In degrees, positive in the north and in the east.
Dictionary gpsGroup(const Attributes& attributes) {
  Dictionary group;
  const auto latitude = attributes.number("latitude"), longitude = attributes.number("longitude");
  if (latitude && longitude && std::abs(*latitude) <= 90 && std::abs(*longitude) <= 180) {
    addDegrees(group, "Latitude", latitude, "NS");
    addDegrees(group, "Longitude", longitude, "EW");
  }
  if (const auto altitude = attributes.number("altitude")) {
    group.emplace("Altitude", std::abs(*altitude));
    group.emplace("AltitudeRef", *altitude < 0 ? 1 : 0);
  }
  return group;
}

Bytes exifOf(const Attributes& attributes) {
  Dictionary tree;
  tree.emplace(kCGImagePropertyTIFFDictionary, tiffGroup(attributes));
  tree.emplace(kCGImagePropertyExifDictionary, exifGroup(attributes));
  tree.emplace(kCGImagePropertyGPSDictionary, gpsGroup(attributes));
  return patchExif({}, {}, tree, {}).value_or(Bytes{});
}

Carrier carrierOf(const Attributes& attributes) {
  Carrier carrier;
  carrier.exif = exifOf(attributes);
  const std::string xmp = attributes.text("xmp");
  carrier.xmp.assign(xmp.begin(), xmp.end());
  const auto add = [&](const char* keyword, const std::string& text) {
    if (!text.empty())
      carrier.texts.push_back(
          {.keyword = keyword, .text = utf8FromUnknown(text), .language = {}, .translatedKeyword = {}});
  };
  add("Copyright", attributes.text("owner"));
  add("Comment", attributes.text("comments"));
  add("Creation Time", attributes.text("capDate"));
  add("Software", attributes.text("software"));
  return carrier;
}

/// The ratio, width to height, as dots to the same length.
std::optional<PixelAspect> aspectOf(double ratio) {
  constexpr double kParts = 100000, kMost = 1000;
  if (!(ratio > 1 / kMost) || !(ratio < kMost) || ratio == 1) return std::nullopt;
  const auto down = static_cast<std::uint32_t>(std::lround(ratio * kParts));
  const auto across = static_cast<std::uint32_t>(kParts);
  const std::uint32_t common = std::gcd(down, across);
  return PixelAspect{across / common, down / common};
}

}  // namespace

Properties readExrProperties(const ExrFile& file, const std::optional<ExrChannels>& channels,
                             const Limits& limits) {
  const ExrChannels known = channels.value_or(ExrChannels{});
  const ExrSize size = sizeOf(file.header().displayWindow());
  PictureFacts facts;
  facts.width = size.width;
  facts.height = size.height;
  facts.depth = known.bits;
  facts.hasAlpha = known.hasAlpha;
  if (known.colour == ExrColour::luminance) facts.model = CGColorSpaceModel::monochrome;
  Dictionary tree = pictureTree(facts, Untagged{});
  if (!known.areIntegers) tree.emplace(kCGImagePropertyIsFloat, true);

  const Attributes attributes(file.header(), limits.metadataBytes);
  Carrier carrier = carrierOf(attributes);
  const double aspect = attributes.positive("pixelAspectRatio").value_or(1);
  // The horizontal density is told; the shape of a pixel says the other one.
  if (const auto density = attributes.positive("xDensity")) {
    constexpr double kStep = 0.0254;  // writers come from whole dots a metre
    tree.emplace(kCGImagePropertyDPIWidth, roundedDensity(*density, kStep));
    tree.emplace(kCGImagePropertyDPIHeight, roundedDensity(*density * aspect, kStep));
  } else {
    carrier.pixelAspect = aspectOf(aspect);
  }
  return readMetadata(std::move(carrier), std::move(tree));
}

}  // namespace ostra
