#include "platform/imageio/metadata/xmp.h"

#include <algorithm>
#include <string>
#include <vector>

#include "platform/imageio/metadata/exif_block.h"
#include "platform/imageio/metadata/xmp_keys.h"
#include "platform/imageio/metadata/xmp_packet.h"
#include "platform/imageio/metadata/xmp_values.h"
#include "platform/imageio/property_keys.h"

namespace ostra {

namespace {

using namespace xmp_space;

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
    {kBasic, "Thumbnails", true},
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
    {kCGImagePropertyExifDictionary, {kExifEx, ""}},
    {kCGImagePropertyExifAuxDictionary, {kAux, ""}},
    {kCGImagePropertyGPSDictionary, {kExif, "GPS"}},
    {kCGImagePropertyTIFFDictionary, {kTiff, ""}},
    {kCGImagePropertyIPTCDictionary, {kIptcCore, ""}},
    {kCGImagePropertyIPTCDictionary, {kIptcExtension, ""}},
    {kCGImagePropertyIPTCDictionary, {kDublinCore, ""}},
    {kCGImagePropertyIPTCDictionary, {kPhotoshop, ""}},
};

bool belongs(const XmpProperty& property, const Family& family) {
  if (property.space != family.space) return false;
  return family.wholeName ? property.name == family.name : property.name.starts_with(family.name);
}

bool isToldOnlyHere(const XmpProperty& property, std::string_view group) {
  const auto rows = xmpKeys();
  return std::any_of(rows.begin(), rows.end(), [&](const XmpKey& row) {
    return row.onlyHere && row.group == group && row.space == property.space && row.name == property.name;
  });
}

Bytes copyOf(ByteView bytes) { return Bytes(bytes.begin(), bytes.end()); }

template <class Unwanted>
Bytes cut(ByteView bytes, Unwanted unwanted) {
  const auto packet = XmpPacket::parse(bytes);
  if (!packet) return copyOf(bytes);
  std::vector<XmpProperty> properties = packet->properties();
  const std::size_t all = properties.size();
  std::erase_if(properties, [&](const XmpProperty& property) { return !unwanted(property); });
  if (properties.empty()) return copyOf(bytes);
  if (properties.size() == all) return {};
  std::sort(properties.begin(), properties.end(),
            [](const XmpProperty& a, const XmpProperty& b) { return a.cut.begin < b.cut.begin; });
  Bytes result;
  std::size_t at = 0;
  const auto keepUpTo = [&](std::size_t end) {
    const ByteView kept = bytes.subspan(at, end - at);
    result.insert(result.end(), kept.begin(), kept.end());
  };
  for (const XmpProperty& property : properties) {
    keepUpTo(property.cut.begin);
    at = property.cut.end;
  }
  keepUpTo(bytes.size());
  return result;
}

/// Sets a simple property wherever the packet has it.
Bytes withNumber(ByteView bytes, const Family& family, std::int64_t number) {
  Bytes result = copyOf(bytes);
  const auto packet = XmpPacket::parse(bytes);
  if (!packet) return result;
  std::vector<XmpProperty> properties = packet->properties();
  // From the end, so that the places before it hold.
  std::sort(properties.begin(), properties.end(),
            [](const XmpProperty& a, const XmpProperty& b) { return a.value.begin > b.value.begin; });
  const std::string text = std::to_string(number);
  for (const XmpProperty& property : properties) {
    if (!belongs(property, family) || property.value.begin == property.value.end) continue;
    const auto begin = result.begin() + static_cast<std::ptrdiff_t>(property.value.begin);
    const auto end = result.begin() + static_cast<std::ptrdiff_t>(property.value.end);
    result.insert(result.erase(begin, end), text.begin(), text.end());
  }
  return result;
}

/// What a packet must lose because the tree says otherwise now, and the elements that it gains.
struct Changes {
  std::vector<XmpName> stale;
  std::string added;
};

bool same(const Dictionary& a, const Dictionary& b, std::string_view key) {
  const auto inA = a.find(key), inB = b.find(key);
  if (inA == a.end() || inB == b.end()) return (inA == a.end()) == (inB == b.end());
  return inA->second == inB->second;
}

void addStale(Changes& changes, std::string_view group, const Dictionary& before, const Dictionary& after) {
  for (const Dictionary* keys : {&before, &after}) {
    for (const auto& [key, value] : *keys) {
      // The orientation is set where it is told, not taken away.
      const bool isOrientation = key == kCGImagePropertyOrientation && after.contains(key);
      if (isOrientation || same(before, after, key)) continue;
      for (XmpName& name : xmpTwins(group, key)) changes.stale.push_back(std::move(name));
    }
  }
}

Changes changesBetween(const Dictionary& before, const Dictionary& after) {
  Changes changes;
  addStale(changes, "", before, after);
  for (const std::string_view group :
       {kCGImagePropertyTIFFDictionary, kCGImagePropertyExifDictionary, kCGImagePropertyExifAuxDictionary,
        kCGImagePropertyGPSDictionary, kCGImagePropertyIPTCDictionary})
    addStale(changes, group, groupOf(before, group), groupOf(after, group));
  for (const XmpKey& row : xmpKeys()) {
    const Dictionary& group = groupOf(after, row.group);
    const auto found = row.onlyHere ? group.find(row.key) : group.end();
    if (found == group.end() || same(groupOf(before, row.group), group, row.key)) continue;
    changes.added += xmpElement(row, found->second);
  }
  return changes;
}

/// The packet with one more description; a new packet where there is none.
Bytes withDescription(Bytes packet, const std::string& elements) {
  std::string description = "<rdf:Description rdf:about=\"\" xmlns:rdf=\"" + std::string(kRdfSpace) + "\"";
  for (const std::string_view space : {kAux, kBasic, kRights, kIptcCore})
    description += " xmlns:" + std::string(xmpPrefix(space)) + "=\"" + std::string(space) + "\"";
  description += ">" + elements + "</rdf:Description>";
  if (packet.empty()) {
    const std::string whole = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF xmlns:rdf=\"" +
                              std::string(kRdfSpace) + "\">" + description + "</rdf:RDF></x:xmpmeta>";
    return Bytes(whole.begin(), whole.end());
  }
  const auto parsed = XmpPacket::parse(packet);
  const auto end = parsed ? parsed->end() : std::nullopt;
  if (end) {
    packet.insert(packet.begin() + static_cast<std::ptrdiff_t>(*end), description.begin(), description.end());
  }
  return packet;
}

}  // namespace

Bytes withoutPixelProperties(ByteView packet) {
  return cut(packet, [](const XmpProperty& property) {
    return std::any_of(std::begin(kPixelProperties), std::end(kPixelProperties),
                       [&](const Family& family) { return belongs(property, family); });
  });
}

Bytes withoutGroupProperties(ByteView packet, std::string_view group) {
  // The place of a photograph is a group of its own, though its names lie among those of Exif.
  const bool keepsPlace = group == kCGImagePropertyExifDictionary;
  const auto ofGroup = [&](const GroupFamily& row) { return row.group == group; };
  if (std::none_of(std::begin(kGroupProperties), std::end(kGroupProperties), ofGroup)) return copyOf(packet);
  return cut(packet, [&](const XmpProperty& property) {
    if (isToldOnlyHere(property, group)) return true;
    if (keepsPlace && belongs(property, {kExif, "GPS"})) return false;
    return std::any_of(std::begin(kGroupProperties), std::end(kGroupProperties), [&](const GroupFamily& row) {
      return row.group == group && belongs(property, row.family);
    });
  });
}

Dictionary readXmp(ByteView bytes, Dictionary& tree) {
  Dictionary told;
  const auto packet = XmpPacket::parse(bytes);
  if (!packet) return told;
  for (const XmpKey& row : xmpKeys()) {
    if (groupOf(tree, row.group).contains(row.key)) continue;
    const XmpProperty* property = packet->find(row.space, row.name);
    const auto value = property != nullptr ? readXmpValue(*packet, *property, row.form) : std::nullopt;
    auto* group = value ? tree.emplace(row.group, Dictionary()).first->second.get<Dictionary>() : nullptr;
    if (group == nullptr) continue;
    group->emplace(row.key, *value);
    told.emplace(row.group, Dictionary()).first->second.get<Dictionary>()->emplace(row.key, *value);
  }
  return told;
}

Bytes withTreeChanges(ByteView packet, const Dictionary& before, const Dictionary& after) {
  const Changes changes = changesBetween(before, after);
  Bytes result = cut(packet, [&](const XmpProperty& property) {
    return std::find(changes.stale.begin(), changes.stale.end(),
                     XmpName{property.space, std::string(property.name)}) != changes.stale.end();
  });
  return changes.added.empty() ? result : withDescription(std::move(result), changes.added);
}

Bytes withOrientation(ByteView packet, std::int64_t orientation) {
  if (orientation < 1 || orientation > 8) return copyOf(packet);
  return withNumber(packet, {kTiff, "Orientation", true}, orientation);
}

Bytes withPixelSize(ByteView packet, std::int64_t width, std::int64_t height) {
  return withNumber(withNumber(packet, {kExif, "PixelXDimension", true}, width),
                    {kExif, "PixelYDimension", true}, height);
}

}  // namespace ostra
