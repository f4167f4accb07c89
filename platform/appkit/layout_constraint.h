#pragma once
#include <vector>

namespace ostra {

class NSView;
struct NSLayoutConstraint;

enum class NSLayoutAttribute { leading, trailing, top, bottom, width };

/// An edge or a length of a view. It does not keep the view alive. Distances grow to the trailing side and
/// downwards.
struct NSLayoutAnchor {
  NSView* view = nullptr;
  NSLayoutAttribute attribute = NSLayoutAttribute::leading;
  bool operator==(const NSLayoutAnchor&) const = default;

  NSLayoutConstraint constraintEqualToAnchor(NSLayoutAnchor other, double constant = 0) const;
};

/// first = second + constant.
struct NSLayoutConstraint {
  NSLayoutAnchor first;
  NSLayoutAnchor second;
  double constant = 0;
  bool operator==(const NSLayoutConstraint&) const = default;

  /// Hands each constraint to the nearest common ancestor of its two views, which may be one of them. Views
  /// without a common ancestor are a programming error: `std::logic_error`.
  static void activateConstraints(const std::vector<NSLayoutConstraint>& constraints);
};

}  // namespace ostra
