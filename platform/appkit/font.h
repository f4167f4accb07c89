#pragma once

namespace ostra {

/// A font of the system's family. Sizes are in points of the user interface; a renderer scales them with the
/// user's own font size, which counts as `systemFontSize`.
struct NSFont {
  double pointSize = 13;
  bool bold = false;
  bool operator==(const NSFont&) const = default;

  static constexpr double systemFontSize() { return 13; }
  static constexpr double smallSystemFontSize() { return 11; }
  static constexpr NSFont systemFontOfSize(double size) { return {size, false}; }
  static constexpr NSFont boldSystemFontOfSize(double size) { return {size, true}; }
};

/// What a colour stands for; the desktop's style says which it is.
enum class NSColor { labelColor, secondaryLabelColor };

}  // namespace ostra
