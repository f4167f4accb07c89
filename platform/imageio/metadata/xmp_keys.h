#pragma once
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ostra {

/// What becomes of an XMP property's value in the tree.
enum class XmpForm {
  text,     // the one value, or the first of an array
  texts,    // an array of strings, even of one
  list,     // the items of an array as one string, "; " between them
  integer,  // the first number
  real,     // a fraction as a double
  reals,    // fractions with blanks between them, as an array of doubles
  moment,   // a date and time as "YYYY:MM:DD HH:MM:SS"
  day,      // its date as "YYYYMMDD"
  clock,    // its time as "HHMMSS", with "+HHMM" where a zone is told
  contact,  // a structure as a dictionary of its fields
};

/// A key of the tree that XMP tells, and the property that does. Several rows of one key: the first that the
/// packet has is read.
struct XmpKey {
  std::string_view group, key, space, name;
  XmpForm form;
  /// No other block has a place for it, so that a new value is written to the packet.
  bool onlyHere = false;
};
std::span<const XmpKey> xmpKeys();

struct XmpName {
  std::string_view space;
  std::string name;
  friend bool operator==(const XmpName&, const XmpName&) = default;
};
/// The properties that repeat a key of a group, or of the top level where `group` is empty.
std::vector<XmpName> xmpTwins(std::string_view group, std::string_view key);

/// The prefix that everybody gives the namespace of a key that is told only here.
std::string_view xmpPrefix(std::string_view space);

namespace xmp_space {
inline constexpr std::string_view kTiff = "http://ns.adobe.com/tiff/1.0/";
inline constexpr std::string_view kExif = "http://ns.adobe.com/exif/1.0/";
inline constexpr std::string_view kExifEx = "http://cipa.jp/exif/1.0/";
inline constexpr std::string_view kAux = "http://ns.adobe.com/exif/1.0/aux/";
inline constexpr std::string_view kBasic = "http://ns.adobe.com/xap/1.0/";
inline constexpr std::string_view kRights = "http://ns.adobe.com/xap/1.0/rights/";
inline constexpr std::string_view kDublinCore = "http://purl.org/dc/elements/1.1/";
inline constexpr std::string_view kPhotoshop = "http://ns.adobe.com/photoshop/1.0/";
inline constexpr std::string_view kIptcCore = "http://iptc.org/std/Iptc4xmpCore/1.0/xmlns/";
inline constexpr std::string_view kIptcExtension = "http://iptc.org/std/Iptc4xmpExt/2008-02-29/";
}  // namespace xmp_space

}  // namespace ostra
