#include "platform/appkit/control.h"

namespace ostra {

void NSControl::setEnabled(bool enabled) {
  enabled_ = enabled;
  changed();
}

void NSControl::sendAction() const {
  if (!enabled_ || !action_) return;
  const std::function<void()> action = action_;  // the action may be replaced while it runs
  action();
}

}  // namespace ostra
