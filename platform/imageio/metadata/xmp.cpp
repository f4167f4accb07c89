#include "platform/imageio/metadata/xmp.h"

#include <algorithm>
#include <string>
#include <vector>

#include <pugixml.hpp>

#include "platform/imageio/metadata/text_encoding.h"
#include "platform/imageio/metadata/xml_scanner.h"
#include "platform/imageio/property_keys.h"

namespace ostra {

namespace {

constexpr std::string_view kRdf = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";
constexpr std::string_view kTiff = "http://ns.adobe.com/tiff/1.0/";
constexpr std::string_view kExif = "http://ns.adobe.com/exif/1.0/";
constexpr std::string_view kPhotoshop = "http://ns.adobe.com/photoshop/1.0/";
constexpr std::string_view kGoogleCamera = "http://ns.google.com/photos/1.0/camera/";

/// Properties of a namespace whose name begins with `name`, or is `name`.
struct Family {
  std::string_view space;
  std::string_view name;
  bool wholeName = false;
};

constexpr Family kPixelProperties[] = {
    {kTiff, "ImageWidth", true},
    {kTiff, "ImageLength", true},
    {kTiff, "BitsPerSample", true},
    {kTiff, "PhotometricInterpretation", true},
    {kTiff, "Compression", true},
    {kExif, "ColorSpace", true},
    {kPhotoshop, "ICCProfile", true},
    {kPhotoshop, "ColorMode", true},
    {"http://ns.adobe.com/xap/1.0/", "Thumbnails", true},
    {"http://ns.adobe.com/camera-raw-settings/1.0/", ""},
    {"http://ns.adobe.com/xmp/note/", "HasExtendedXMP", true},
    // Gain maps, and pictures and films behind the end of the first picture, are not written again.
    {"http://ns.adobe.com/hdr-gain-map/1.0/", ""},
    {"http://ns.apple.com/HDRGainMap/1.0/", ""},
    {"http://ns.google.com/photos/1.0/container/", ""},
    {kGoogleCamera, "MicroVideo"},
    {kGoogleCamera, "MotionPhoto"},
};

struct GroupFamily {
  std::string_view group;
  Family family;
};
constexpr GroupFamily kGroupProperties[] = {
    {kCGImagePropertyExifDictionary, {kExif, ""}},
    {kCGImagePropertyExifDictionary, {"http://cipa.jp/exif/1.0/", ""}},
    {kCGImagePropertyExifAuxDictionary, {"http://ns.adobe.com/exif/1.0/aux/", ""}},
    {kCGImagePropertyGPSDictionary, {kExif, "GPS"}},
    {kCGImagePropertyTIFFDictionary, {kTiff, ""}},
    {kCGImagePropertyIPTCDictionary, {"http://iptc.org/std/Iptc4xmpCore/1.0/xmlns/", ""}},
    {kCGImagePropertyIPTCDictionary, {"http://iptc.org/std/Iptc4xmpExt/2008-02-29/", ""}},
    {kCGImagePropertyIPTCDictionary, {"http://purl.org/dc/elements/1.1/", ""}},
    {kCGImagePropertyIPTCDictionary, {kPhotoshop, ""}},
};

struct Property {
  std::string_view space, name;
  XmlSpan cut;    // with the white space before it
  XmlSpan value;  // the text of a simple one
};

bool belongs(const Property& property, const Family& family) {
  if (property.space != family.space) return false;
  return family.wholeName ? property.name == family.name : property.name.starts_with(family.name);
}

struct QualifiedName {
  std::string_view space, name;
};

/// The elements of a packet, with names resolved.
class Packet {
 public:
  static std::optional<Packet> parse(ByteView bytes);
  std::vector<Property> properties() const;

 private:
  QualifiedName resolve(std::size_t element, std::string_view name, bool isAttribute) const;
  bool isDescription(std::size_t element) const;
  Property elementProperty(std::size_t element) const;

  std::string_view text_;
  std::vector<XmlElement> elements_;
};

std::optional<Packet> Packet::parse(ByteView bytes) {
  Packet packet;
  packet.text_ = asText(bytes);
  if (!isUtf8(packet.text_)) return std::nullopt;
  // The library judges whether this is XML at all; our own pass only tells where its pieces lie.
  pugi::xml_document document;
  if (!document.load_buffer(bytes.data(), bytes.size(), pugi::parse_default, pugi::encoding_utf8))
    return std::nullopt;
  auto elements = scanXml(packet.text_);
  if (!elements) return std::nullopt;
  packet.elements_ = std::move(*elements);
  return packet;
}

/// A prefix means what the nearest element around the name says. An attribute without one belongs to no
/// namespace.
QualifiedName Packet::resolve(std::size_t element, std::string_view name, bool isAttribute) const {
  const std::size_t colon = name.find(':');
  const bool prefixed = colon != std::string_view::npos;
  if (!prefixed && isAttribute) return {"", name};
  const std::string_view local = prefixed ? name.substr(colon + 1) : name;
  const std::string declaration = prefixed ? "xmlns:" + std::string(name.substr(0, colon)) : "xmlns";
  for (std::size_t at = element;; at = elements_[at].parent) {
    for (const XmlAttribute& attribute : elements_[at].attributes) {
      if (attribute.name == declaration) return {attribute.value, local};
    }
    if (elements_[at].parent == at) return {"", local};
  }
}

/// Only what describes the picture itself: a description inside another one is of an ingredient.
bool Packet::isDescription(std::size_t element) const {
  constexpr std::size_t kDeepest = 3;  // x:xmpmeta, rdf:RDF, rdf:Description
  const std::size_t parent = elements_[element].parent;
  if (parent == element || elements_[element].depth >= kDeepest) return false;
  const auto isRdf = [&](std::size_t index, std::string_view wanted) {
    const QualifiedName name = resolve(index, elements_[index].name, false);
    return name.space == kRdf && name.name == wanted;
  };
  return isRdf(element, "Description") && isRdf(parent, "RDF");
}

Property Packet::elementProperty(std::size_t element) const {
  const XmlElement& found = elements_[element];
  const QualifiedName name = resolve(element, found.name, false);
  std::size_t begin = found.span.begin;
  while (begin > 0 && std::string_view(" \t\r\n").find(text_[begin - 1]) != std::string_view::npos) --begin;
  return {name.space, name.name, {begin, found.span.end}, found.content};
}

std::vector<Property> Packet::properties() const {
  std::vector<Property> found;
  for (std::size_t i = 0; i < elements_.size(); ++i) {
    const std::size_t parent = elements_[i].parent;
    if (parent != i && isDescription(parent)) found.push_back(elementProperty(i));
    if (!isDescription(i)) continue;
    for (const XmlAttribute& attribute : elements_[i].attributes) {
      const QualifiedName name = resolve(i, attribute.name, true);
      const bool isXml = attribute.name.starts_with("xmlns") || attribute.name.starts_with("xml:");
      if (isXml || name.space.empty() || name.space == kRdf) continue;
      found.push_back({name.space, name.name, attribute.span, attribute.valueSpan});
    }
  }
  return found;
}

Bytes copyOf(ByteView bytes) { return Bytes(bytes.begin(), bytes.end()); }

template <class Unwanted>
Bytes cut(ByteView bytes, Unwanted unwanted) {
  const auto packet = Packet::parse(bytes);
  if (!packet) return copyOf(bytes);
  std::vector<Property> properties = packet->properties();
  const std::size_t all = properties.size();
  std::erase_if(properties, [&](const Property& property) { return !unwanted(property); });
  if (properties.empty()) return copyOf(bytes);
  if (properties.size() == all) return {};
  std::sort(properties.begin(), properties.end(),
            [](const Property& a, const Property& b) { return a.cut.begin < b.cut.begin; });
  Bytes result;
  std::size_t at = 0;
  const auto keepUpTo = [&](std::size_t end) {
    const ByteView kept = bytes.subspan(at, end - at);
    result.insert(result.end(), kept.begin(), kept.end());
  };
  for (const Property& property : properties) {
    keepUpTo(property.cut.begin);
    at = property.cut.end;
  }
  keepUpTo(bytes.size());
  return result;
}

}  // namespace

Bytes withoutPixelProperties(ByteView packet) {
  return cut(packet, [](const Property& property) {
    return std::any_of(std::begin(kPixelProperties), std::end(kPixelProperties),
                       [&](const Family& family) { return belongs(property, family); });
  });
}

Bytes withoutGroupProperties(ByteView packet, std::string_view group) {
  // The place of a photograph is a group of its own, though its names lie among those of Exif.
  const bool keepsPlace = group == kCGImagePropertyExifDictionary;
  const auto ofGroup = [&](const GroupFamily& row) { return row.group == group; };
  if (std::none_of(std::begin(kGroupProperties), std::end(kGroupProperties), ofGroup)) return copyOf(packet);
  return cut(packet, [&](const Property& property) {
    if (keepsPlace && belongs(property, {kExif, "GPS"})) return false;
    return std::any_of(std::begin(kGroupProperties), std::end(kGroupProperties), [&](const GroupFamily& row) {
      return row.group == group && belongs(property, row.family);
    });
  });
}

Bytes withOrientation(ByteView bytes, std::int64_t orientation) {
  Bytes result = copyOf(bytes);
  const auto packet = Packet::parse(bytes);
  if (!packet || orientation < 1 || orientation > 8) return result;
  std::vector<Property> properties = packet->properties();
  // From the end, so that the places before it hold.
  std::sort(properties.begin(), properties.end(),
            [](const Property& a, const Property& b) { return a.value.begin > b.value.begin; });
  for (const Property& property : properties) {
    if (!belongs(property, {kTiff, "Orientation", true})) continue;
    const auto begin = result.begin() + static_cast<std::ptrdiff_t>(property.value.begin);
    const auto end = result.begin() + static_cast<std::ptrdiff_t>(property.value.end);
    if (begin == end) continue;
    *begin = static_cast<std::uint8_t>('0' + orientation);
    result.erase(begin + 1, end);
  }
  return result;
}

}  // namespace ostra
