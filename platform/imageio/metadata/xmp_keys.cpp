#include "platform/imageio/metadata/xmp_keys.h"

#include <algorithm>

#include "platform/imageio/metadata/exif_tags.h"
#include "platform/imageio/property_keys.h"

namespace ostra {

namespace {

using namespace xmp_space;
using F = XmpForm;

constexpr std::string_view kTiffGroup = kCGImagePropertyTIFFDictionary;
constexpr std::string_view kExifGroup = kCGImagePropertyExifDictionary;
constexpr std::string_view kAuxGroup = kCGImagePropertyExifAuxDictionary;
constexpr std::string_view kGpsGroup = kCGImagePropertyGPSDictionary;
constexpr std::string_view kIptcGroup = kCGImagePropertyIPTCDictionary;

// The names are those of the XMP specification, part 2, and of IPTC's Core 1.3, which also says which of them
// repeats which data set. Orientation and density are left out: few programs heed them here, so that telling
// them elsewhere would turn or scale a picture that nobody turned or scaled before.
// clang-format off
constexpr XmpKey kKeys[] = {
    {kTiffGroup, "Make", kTiff, "Make", F::text},
    {kTiffGroup, "Model", kTiff, "Model", F::text},
    {kTiffGroup, "ImageDescription", kTiff, "ImageDescription", F::text},
    {kTiffGroup, "ImageDescription", kDublinCore, "description", F::text},
    {kTiffGroup, "Software", kTiff, "Software", F::text},
    {kTiffGroup, "Software", kBasic, "CreatorTool", F::text},
    {kTiffGroup, "DateTime", kTiff, "DateTime", F::moment},
    {kTiffGroup, "DateTime", kBasic, "ModifyDate", F::moment},
    {kTiffGroup, "Artist", kTiff, "Artist", F::text},
    {kTiffGroup, "Artist", kDublinCore, "creator", F::list},
    {kTiffGroup, "Copyright", kTiff, "Copyright", F::text},
    {kTiffGroup, "Copyright", kDublinCore, "rights", F::text},

    {kExifGroup, "UserComment", kExif, "UserComment", F::text},
    {kExifGroup, "DateTimeOriginal", kExif, "DateTimeOriginal", F::moment},
    {kExifGroup, "DateTimeOriginal", kPhotoshop, "DateCreated", F::moment},
    {kExifGroup, "DateTimeDigitized", kExif, "DateTimeDigitized", F::moment},
    {kExifGroup, "DateTimeDigitized", kBasic, "CreateDate", F::moment},

    {kAuxGroup, "LensInfo", kAux, "LensInfo", F::reals, true},
    {kAuxGroup, "LensModel", kAux, "Lens", F::text, true},
    {kAuxGroup, "SerialNumber", kAux, "SerialNumber", F::text, true},
    {kAuxGroup, "LensID", kAux, "LensID", F::integer, true},
    {kAuxGroup, "LensSerialNumber", kAux, "LensSerialNumber", F::text, true},
    {kAuxGroup, "ImageNumber", kAux, "ImageNumber", F::integer, true},
    {kAuxGroup, "FlashCompensation", kAux, "FlashCompensation", F::real, true},
    {kAuxGroup, "OwnerName", kAux, "OwnerName", F::text, true},
    {kAuxGroup, "Firmware", kAux, "Firmware", F::text, true},

    {kIptcGroup, "ObjectAttributeReference", kIptcCore, "IntellectualGenre", F::texts},
    {kIptcGroup, "ObjectName", kDublinCore, "title", F::text},
    {kIptcGroup, "Urgency", kPhotoshop, "Urgency", F::text},
    {kIptcGroup, "SubjectReference", kIptcCore, "SubjectCode", F::texts},
    {kIptcGroup, "Category", kPhotoshop, "Category", F::text},
    {kIptcGroup, "SupplementalCategory", kPhotoshop, "SupplementalCategories", F::texts},
    {kIptcGroup, "Keywords", kDublinCore, "subject", F::texts},
    {kIptcGroup, "SpecialInstructions", kPhotoshop, "Instructions", F::text},
    {kIptcGroup, "DateCreated", kPhotoshop, "DateCreated", F::day},
    {kIptcGroup, "TimeCreated", kPhotoshop, "DateCreated", F::clock},
    {kIptcGroup, "Byline", kDublinCore, "creator", F::texts},
    {kIptcGroup, "BylineTitle", kPhotoshop, "AuthorsPosition", F::texts},
    {kIptcGroup, "City", kPhotoshop, "City", F::text},
    {kIptcGroup, "SubLocation", kIptcCore, "Location", F::text},
    {kIptcGroup, "Province/State", kPhotoshop, "State", F::text},
    {kIptcGroup, "Country/PrimaryLocationCode", kIptcCore, "CountryCode", F::text},
    {kIptcGroup, "Country/PrimaryLocationName", kPhotoshop, "Country", F::text},
    {kIptcGroup, "OriginalTransmissionReference", kPhotoshop, "TransmissionReference", F::text},
    {kIptcGroup, "Headline", kPhotoshop, "Headline", F::text},
    {kIptcGroup, "Credit", kPhotoshop, "Credit", F::text},
    {kIptcGroup, "Source", kPhotoshop, "Source", F::text},
    {kIptcGroup, "CopyrightNotice", kDublinCore, "rights", F::text},
    {kIptcGroup, "Caption/Abstract", kDublinCore, "description", F::text},
    {kIptcGroup, "Writer/Editor", kPhotoshop, "CaptionWriter", F::texts},
    {kIptcGroup, "CreatorContactInfo", kIptcCore, "CreatorContactInfo", F::contact, true},
    {kIptcGroup, "Scene", kIptcCore, "Scene", F::texts, true},
    {kIptcGroup, "UsageTerms", kRights, "UsageTerms", F::text, true},
    {kIptcGroup, "StarRating", kBasic, "Rating", F::integer, true},
};

/// Keys that XMP spells in another way, or tells as a part of another property.
struct Spelling {
  std::string_view group, key, name;
};
constexpr Spelling kSpellings[] = {
    {kExifGroup, "FlashPixVersion", "FlashpixVersion"},
    {kExifGroup, "FocalLenIn35mmFilm", "FocalLengthIn35mmFilm"},
    {kExifGroup, "SubjectDistRange", "SubjectDistanceRange"},
    {kExifGroup, "SubsecTimeOriginal", "DateTimeOriginal"},
    {kExifGroup, "SubsecTimeDigitized", "DateTimeDigitized"},
    {kGpsGroup, "GPSVersion", "GPSVersionID"},
    {kGpsGroup, "LatitudeRef", "GPSLatitude"},
    {kGpsGroup, "LongitudeRef", "GPSLongitude"},
    {kGpsGroup, "DestLatitudeRef", "GPSDestLatitude"},
    {kGpsGroup, "DestLongitudeRef", "GPSDestLongitude"},
    {kGpsGroup, "DateStamp", "GPSTimeStamp"},
};
// clang-format on

constexpr std::pair<std::string_view, std::string_view> kPrefixes[] = {
    {kAux, "aux"}, {kBasic, "xmp"}, {kRights, "xmpRights"}, {kIptcCore, "Iptc4xmpCore"}};

std::string spelled(std::string_view group, std::string_view key) {
  const auto found = std::find_if(std::begin(kSpellings), std::end(kSpellings),
                                  [&](const Spelling& row) { return row.group == group && row.key == key; });
  if (found != std::end(kSpellings)) return std::string(found->name);
  return (group == kGpsGroup ? "GPS" : "") + std::string(key);
}

void addExifNames(std::vector<XmpName>& names, std::string_view group, std::string_view key) {
  const auto groups = exifGroups();
  const bool known = std::any_of(groups.begin(), groups.end(), [&](const ExifGroup& row) {
    return row.key == group && findTag(row, key) != nullptr;
  });
  if (!known) return;
  const std::string name = spelled(group, key);
  if (group == kTiffGroup) {
    names.push_back({kTiff, name});
  } else {
    names.push_back({kExif, name});
    names.push_back({kExifEx, name == "ISOSpeedRatings" ? "PhotographicSensitivity" : name});
  }
}

}  // namespace

std::span<const XmpKey> xmpKeys() { return kKeys; }

std::vector<XmpName> xmpTwins(std::string_view group, std::string_view key) {
  std::vector<XmpName> names;
  if (group.empty() && key == kCGImagePropertyDPIWidth)
    return {{kTiff, "XResolution"}, {kTiff, "YResolution"}, {kTiff, "ResolutionUnit"}};
  if (group.empty() && key == kCGImagePropertyDPIHeight) return xmpTwins("", kCGImagePropertyDPIWidth);
  addExifNames(names, group, key);
  for (const XmpKey& row : kKeys) {
    const XmpName name{row.space, std::string(row.name)};
    const bool known = std::find(names.begin(), names.end(), name) != names.end();
    if (row.group == group && row.key == key && !known) names.push_back(name);
  }
  return names;
}

std::string_view xmpPrefix(std::string_view space) {
  const auto found = std::find_if(std::begin(kPrefixes), std::end(kPrefixes),
                                  [&](const auto& row) { return row.first == space; });
  return found == std::end(kPrefixes) ? std::string_view() : found->second;
}

}  // namespace ostra
