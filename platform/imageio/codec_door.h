#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>

#include "platform/foundation/bytes.h"
#include "platform/foundation/unique_fd.h"
#include "platform/graphics/bitmap_info.h"
#include "platform/graphics/color_space.h"
#include "platform/imageio/limits.h"
#include "platform/imageio/properties.h"

namespace ostra {

/// `missing`: this machine lacks the module of its format. `forbidden`: its decoder was ended because it
/// asked the system for something that it may not do.
enum class FaultKind { notImage, missing, damaged, limit, crashed, forbidden };

/// Why the door gave nothing; never a library's own words. `limit` is `LimitName::none` unless the kind is
/// `limit`.
struct Fault {
  FaultKind kind = FaultKind::damaged;
  LimitName limit = LimitName::none;
  friend bool operator==(const Fault&, const Fault&) = default;
};

template <class T>
using Answer = std::variant<T, Fault>;

/// What the structure of a file claims, nothing decoded: the type identifier, the number of pictures, and
/// frame 0. A number that the structure does not tell is 0.
struct Opened {
  std::string type;
  std::uint32_t count = 0;
  std::uint32_t width = 0, height = 0;
  std::uint8_t bits = 0, components = 0;
};

/// Pixels as `CGImage` holds them: top row first, 8 bits or 16-bit little-endian words, alpha as `bitmapInfo`
/// says. The model is gray, RGB or CMYK (not inverted: 0 is no ink).
struct Layout {
  std::uint32_t width = 0, height = 0;
  std::uint8_t bitsPerComponent = 8;
  std::uint8_t bitsPerPixel = 32;
  std::size_t bytesPerRow = 0;
  CGColorSpaceModel model = CGColorSpaceModel::rgb;
  CGBitmapInfo bitmapInfo = 0;
};

/// What a file says its colours mean. Untagged: the default of the model.
struct Untagged {};
/// One of the names of color_space.h.
struct NamedSpace {
  std::string name;
};
/// Chromaticities as x, y pairs (no primaries for gray) and the exponent from stored value to light.
struct Calibrated {
  std::array<double, 2> white{};
  std::optional<std::array<double, 6>> primaries;
  double gamma = 1;
};
struct IccProfile {
  Bytes bytes;
};
using ProfileRecord = std::variant<Untagged, NamedSpace, Calibrated, IccProfile>;

struct Pixels {
  Layout layout;
  SharedBytes bytes;
  ProfileRecord profile;
};

/// A file being read: one descriptor, one child where decoding is confined. Destroying it ends the child.
class Reader {
 public:
  virtual ~Reader() = default;
  virtual const Opened& opened() const = 0;
  /// Limits fail here, never in opening. Never part of a picture. To be asked once: nobody but the
  /// caller keeps the pixels, so that their memory ends when he lets go of them.
  virtual Answer<Pixels> decode(std::uint32_t index) = 0;
  virtual Answer<Properties> properties(std::uint32_t index) = 0;
};

/// The only way from the bytes of a file to pixels, and back. Any thread.
class CodecDoor {
 public:
  virtual ~CodecDoor() = default;
  /// Takes a descriptor open for reading on a regular file.
  virtual Answer<std::unique_ptr<Reader>> open(UniqueFd file, const Limits& limits) = 0;
  /// `properties` may be null. Throws `std::system_error` where it is not the codec that failed.
  virtual Answer<Bytes> encode(std::string_view type, const Pixels& pixels, const Properties* properties) = 0;
  /// The table less what this machine lacks. Throws `std::system_error` when that cannot be known.
  virtual std::set<std::string> writable() const = 0;

  /// The door that runs the codecs in this process.
  static CodecDoor& standard();
};

}  // namespace ostra
