#include "platform/appkit/view.h"

#include <algorithm>
#include <stdexcept>

namespace ostra {
namespace {

std::vector<NSView*> withAncestors(NSView* view) {
  std::vector<NSView*> line;
  for (; view != nullptr; view = view->superview().get()) line.push_back(view);
  return line;
}

NSView& nearestCommonAncestor(NSView* first, NSView* second) {
  const std::vector<NSView*> others = withAncestors(second);
  for (NSView* view : withAncestors(first)) {
    if (std::find(others.begin(), others.end(), view) != others.end()) return *view;
  }
  throw std::logic_error("a constraint between views that have no common ancestor");
}

}  // namespace

void NSView::addSubview(const std::shared_ptr<NSView>& view) {
  view->superview_ = weak_from_this();
  subviews_.push_back(view);
}

void NSView::changed() const {
  if (observer_) observer_();
}

NSLayoutConstraint NSLayoutAnchor::constraintEqualToAnchor(NSLayoutAnchor other, double constant) const {
  return {*this, other, constant};
}

void NSLayoutConstraint::activateConstraints(const std::vector<NSLayoutConstraint>& constraints) {
  for (const NSLayoutConstraint& constraint : constraints) {
    nearestCommonAncestor(constraint.first.view, constraint.second.view).constraints_.push_back(constraint);
  }
}

}  // namespace ostra
