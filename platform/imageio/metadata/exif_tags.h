#pragma once
#include <cstdint>
#include <span>
#include <string_view>

#include "platform/imageio/metadata/exif_structure.h"

namespace ostra {

/// What becomes of an entry's value in the tree.
enum class ExifForm {
  integer,   // the first number
  integers,  // an array, even of one
  real,      // a rational as a double
  reals,     // an array of them
  text,      // up to the first NUL
  data,      // bytes
  version,   // "0232" as (2, 3, 2)
  comment,   // text after 8 bytes that name its encoding
  degrees,   // degrees, minutes and seconds as one double
  time,      // three rationals as "HH:MM:SS"
};

/// One tag that the tree names. `type` is what a new entry is written as.
struct ExifTag {
  std::uint16_t tag;
  std::string_view key;
  ExifType type;
  ExifForm form;
  /// Describes the layout of the file that it is in: corrected and removed, never added to another file.
  bool structural = false;
};

inline constexpr std::uint16_t kOrientationTag = 0x0112;
inline constexpr std::uint16_t kXResolutionTag = 0x011A;
inline constexpr std::uint16_t kYResolutionTag = 0x011B;
inline constexpr std::uint16_t kResolutionUnitTag = 0x0128;

/// A group of the tree, the directory that it comes from, and its tags (Exif 3.0, TIFF 6.0) in ascending
/// order.
struct ExifGroup {
  std::string_view key;
  IfdKind ifd;
  std::span<const ExifTag> tags;
};
/// {TIFF}, {Exif} and {GPS}.
std::span<const ExifGroup> exifGroups();
/// The tag of a key or of a number, or null.
const ExifTag* findTag(const ExifGroup& group, std::string_view key);
const ExifTag* findTag(const ExifGroup& group, std::uint16_t tag);

}  // namespace ostra
