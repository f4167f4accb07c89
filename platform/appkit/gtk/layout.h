#pragma once
#include <optional>

#include "platform/appkit/view.h"

namespace ostra::gtk {

/// What the constraints between a view and its superview ask of the view's widget. Lengths are in points.
struct Placement {
  /// Distances from the superview's edges, inwards; nothing where an edge is left free.
  std::optional<double> leading, trailing, top, bottom;
  /// As wide as its superview.
  bool sameWidth = false;

  /// Reaches to the trailing edge, however much room there is.
  bool fillsWidth() const { return trailing.has_value() || sameWidth; }
  bool fillsHeight() const { return top.has_value() && bottom.has_value(); }
};

/// The placement of a view that has a superview.
Placement placementOf(NSView& view);

}  // namespace ostra::gtk
