#pragma once
#include <cstdint>
#include <optional>

#include "platform/foundation/bytes.h"
#include "platform/graphics/color_space.h"

namespace ostra {

/// Four characters as ICC profiles store them, such as "rTRC".
constexpr std::uint32_t iccSignature(const char (&text)[5]) {
  std::uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<std::uint8_t>(text[i]);
  return value;
}

/// Big-endian numbers; the caller has checked that the bytes are there.
std::uint16_t iccUInt16(ByteView bytes, std::size_t offset);
std::uint32_t iccUInt32(ByteView bytes, std::size_t offset);
/// s15.16.
double iccFixed(ByteView bytes, std::size_t offset);

/// A profile whose header and tag table have been checked: every tag lies inside the profile. Refers to the
/// bytes.
class CheckedProfile {
 public:
  /// Nothing unless the size field is covered by the bytes, the file signature stands, the version is 2 to 4,
  /// the class is one that describes a device or a space (whose components we know), and the tag table and
  /// all tags lie inside the profile.
  static std::optional<CheckedProfile> of(ByteView bytes);

  /// As many as its header counts: what follows them is no part of the profile.
  ByteView bytes() const { return bytes_; }
  bool has(std::uint32_t signature) const { return !tag(signature).empty(); }
  /// A tag's bytes, its type signature first; at least 8, or empty when there is no such tag.
  ByteView tag(std::uint32_t signature) const;
  std::uint32_t colorSpace() const { return iccUInt32(bytes_, 16); }
  std::uint32_t connectionSpace() const { return iccUInt32(bytes_, 20); }
  CGColorSpaceModel model() const;
  /// Components of a pixel.
  int components() const;

 private:
  explicit CheckedProfile(ByteView bytes) : bytes_(bytes) {}
  ByteView bytes_;
};

}  // namespace ostra
