#pragma once

namespace ostra {

/// Lengths are in points of the user interface: pixels at a scale of one.
struct CGSize {
  double width = 0;
  double height = 0;
  bool operator==(const CGSize&) const = default;
};

/// The origin is the lower left corner, y grows upwards.
struct NSRect {
  double x = 0;
  double y = 0;
  CGSize size;
  bool operator==(const NSRect&) const = default;
};

}  // namespace ostra
