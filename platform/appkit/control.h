#pragma once
#include <functional>

#include "platform/appkit/view.h"

namespace ostra {

/// A view that the user acts on.
class NSControl : public NSView {
 public:
  using NSView::NSView;

  bool isEnabled() const { return enabled_; }
  void setEnabled(bool enabled);
  /// What using the control does. It should hold its target weakly; may be empty.
  void setAction(std::function<void()> action) { action_ = std::move(action); }

 protected:
  /// Does nothing while the control is disabled.
  void sendAction() const;

 private:
  bool enabled_ = true;
  std::function<void()> action_;
};

}  // namespace ostra
