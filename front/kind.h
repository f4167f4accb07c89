#pragma once
#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace ostra {

/// The one conversion that a bundle performs. Written in property lists and in the log as its raw value.
enum class OstraQuickActionKind {
  convertColorProfile,
  grayscale,
  grayscaleJPEG,
  jpeg,
  sRGB,
  sRGBJPEG,
  invert,
};

/// Every kind, in the order of declaration.
const std::array<OstraQuickActionKind, 7>& allCases();

std::string_view rawValue(OstraQuickActionKind kind);
/// The kind whose raw value is exactly `rawValue`, or nothing.
std::optional<OstraQuickActionKind> kindWithRawValue(std::string_view rawValue);

/// The kinds whose result is always a JPEG file. They never need to rewrite the selected file.
bool isJPEGKind(OstraQuickActionKind kind);
/// The kinds whose result has the format of the selected file, and takes its place, where that can be
/// written.
bool isFormatKeepingKind(OstraQuickActionKind kind);

/// The kind that the main bundle names under NIVEQuickAction, white space around it ignored; nothing when it
/// names none that exists.
std::optional<OstraQuickActionKind> configuredKind();

/// The title of a kind in a bundle that has no display name.
std::string_view fallbackTitle(OstraQuickActionKind kind);
/// The main bundle's display name exactly as stored; the kind's own title where the bundle has none.
std::string displayTitle(OstraQuickActionKind kind);

}  // namespace ostra

/// A kind hashes as its raw value, so that sets of kinds and sets of raw values agree.
template <>
struct std::hash<ostra::OstraQuickActionKind> {
  std::size_t operator()(ostra::OstraQuickActionKind kind) const noexcept {
    return std::hash<std::string_view>{}(ostra::rawValue(kind));
  }
};
