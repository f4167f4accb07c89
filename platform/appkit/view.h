#pragma once
#include <functional>
#include <memory>
#include <vector>

#include "platform/appkit/geometry.h"
#include "platform/appkit/layout_constraint.h"
#include "platform/foundation/object.h"

namespace ostra {

/// A part of a window, described and not drawn: a renderer shows it, a test reads it. Main thread. A view is
/// owned by its superview and by whoever else keeps it; made with `std::make_shared`.
class NSView : public NSObject, public std::enable_shared_from_this<NSView> {
 public:
  explicit NSView(NSRect frame = {}) : frame_(frame) {}

  const NSRect& frame() const { return frame_; }
  void addSubview(const std::shared_ptr<NSView>& view);
  /// Back to front; those of a stack are its arranged views, in order.
  const std::vector<std::shared_ptr<NSView>>& subviews() const { return subviews_; }
  /// Null for a root.
  std::shared_ptr<NSView> superview() const { return superview_.lock(); }

  /// Whether the frame counts for the layout; without it, constraints alone do.
  bool translatesAutoresizingMaskIntoConstraints() const { return translatesMask_; }
  void setTranslatesAutoresizingMaskIntoConstraints(bool translates) { translatesMask_ = translates; }

  NSLayoutAnchor leadingAnchor() { return {this, NSLayoutAttribute::leading}; }
  NSLayoutAnchor trailingAnchor() { return {this, NSLayoutAttribute::trailing}; }
  NSLayoutAnchor topAnchor() { return {this, NSLayoutAttribute::top}; }
  NSLayoutAnchor bottomAnchor() { return {this, NSLayoutAttribute::bottom}; }
  NSLayoutAnchor widthAnchor() { return {this, NSLayoutAttribute::width}; }
  /// The active constraints that this view holds: those whose views it is the nearest common ancestor of.
  const std::vector<NSLayoutConstraint>& constraints() const { return constraints_; }

  /// Called after each change of what the view shows; one at a time, a renderer's. May be empty.
  void setObserver(std::function<void()> observer) { observer_ = std::move(observer); }

 protected:
  void changed() const;

 private:
  friend struct NSLayoutConstraint;

  NSRect frame_;
  std::vector<std::shared_ptr<NSView>> subviews_;
  std::weak_ptr<NSView> superview_;
  std::vector<NSLayoutConstraint> constraints_;
  bool translatesMask_ = true;
  std::function<void()> observer_;
};

}  // namespace ostra
