#include "platform/appkit/gtk/layout.h"

namespace ostra::gtk {
namespace {

/// How far `view` lies from the same anchor of its superview, if the constraint is between these two.
std::optional<double> offset(const NSLayoutConstraint& constraint, const NSView* view,
                             const NSView* superview) {
  if (constraint.first.attribute != constraint.second.attribute) return std::nullopt;
  if (constraint.first.view == view && constraint.second.view == superview) return constraint.constant;
  if (constraint.second.view == view && constraint.first.view == superview) return -constraint.constant;
  return std::nullopt;
}

void apply(Placement& placement, NSLayoutAttribute attribute, double offset) {
  switch (attribute) {
    case NSLayoutAttribute::leading:
      placement.leading = offset;
      break;
    case NSLayoutAttribute::trailing:
      placement.trailing = -offset;
      break;
    case NSLayoutAttribute::top:
      placement.top = offset;
      break;
    case NSLayoutAttribute::bottom:
      placement.bottom = -offset;
      break;
    case NSLayoutAttribute::width:
      placement.sameWidth = true;
      break;
  }
}

}  // namespace

Placement placementOf(NSView& view) {
  Placement placement;
  const auto superview = view.superview();
  if (!superview) return placement;
  // The superview is the nearest common ancestor of the two, so it holds what is between them.
  for (const NSLayoutConstraint& constraint : superview->constraints()) {
    if (const auto distance = offset(constraint, &view, superview.get())) {
      apply(placement, constraint.first.attribute, *distance);
    }
  }
  return placement;
}

}  // namespace ostra::gtk
