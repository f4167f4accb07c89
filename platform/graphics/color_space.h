#pragma once
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/bytes.h"

namespace ostra {

enum class CGColorSpaceModel : int {
  unknown = -1,
  monochrome = 0,
  rgb = 1,
  cmyk = 2,
  lab = 3,
  deviceN = 4,
  indexed = 5,
  pattern = 6,
  xyz = 7,
};

inline constexpr std::string_view kCGColorSpaceSRGB = "kCGColorSpaceSRGB";
inline constexpr std::string_view kCGColorSpaceDisplayP3 = "kCGColorSpaceDisplayP3";
inline constexpr std::string_view kCGColorSpaceAdobeRGB1998 = "kCGColorSpaceAdobeRGB1998";
inline constexpr std::string_view kCGColorSpaceROMMRGB = "kCGColorSpaceROMMRGB";
inline constexpr std::string_view kCGColorSpaceITUR_2020 = "kCGColorSpaceITUR_2020";
inline constexpr std::string_view kCGColorSpaceDCIP3 = "kCGColorSpaceDCIP3";
inline constexpr std::string_view kCGColorSpaceLinearSRGB = "kCGColorSpaceLinearSRGB";
inline constexpr std::string_view kCGColorSpaceGenericGrayGamma2_2 = "kCGColorSpaceGenericGrayGamma2_2";
/// CMYK without a profile: the system's default CMYK profile when one is installed, else the plain formula.
inline constexpr std::string_view kCGColorSpaceDeviceCMYK = "kCGColorSpaceDeviceCMYK";

class CGColorSpace;
using CGColorSpaceRef = std::shared_ptr<const CGColorSpace>;

/// The meaning of colour values. Immutable, shared, safe on any thread.
class CGColorSpace {
 public:
  /// The space of one of the names above; null for any other. A name gives the same object every time.
  static CGColorSpaceRef createWithName(std::string_view name);
  /// The space of an ICC profile, version 2 to 4, which begins the data. Null when that is no whole,
  /// well-formed profile or is a device link, abstract or a list of named colours.
  static CGColorSpaceRef createWithICCData(ByteView data);
  /// An RGB space (chromaticities of white and of red, green, blue as x, y pairs) or, without `primaries`, a
  /// gray one, in which a value v means v raised to `gamma`. Null when the numbers make no space.
  static CGColorSpaceRef createCalibrated(const double (&white)[2], const double (*primaries)[6],
                                          double gamma);

  ~CGColorSpace();
  CGColorSpaceModel model() const;
  /// One of the names above, or nothing for a space made otherwise.
  std::optional<std::string_view> name() const;
  /// The profile's bytes: as given, or made by us for a space given by name or by numbers. Empty when there
  /// is none (device CMYK).
  ByteView iccData() const;
  /// The profile's description in English, such as "Display P3".
  const std::string& profileDescription() const;
  /// Colour components of a pixel, alpha not counted.
  int numberOfComponents() const;

  /// What this room keeps behind a space; opaque elsewhere.
  struct Contents;
  const Contents& contents() const { return *contents_; }
  explicit CGColorSpace(std::unique_ptr<Contents> contents);

 private:
  std::unique_ptr<Contents> contents_;
};

/// Makes every named space; called once at start, so that no later call allocates for one.
void prepareNamedColorSpaces();

}  // namespace ostra
