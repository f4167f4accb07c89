#include "platform/appkit/view_search.h"

namespace ostra {

std::vector<std::shared_ptr<NSView>> viewsBelow(const std::shared_ptr<NSView>& root) {
  std::vector<std::shared_ptr<NSView>> views{root};
  for (const std::shared_ptr<NSView>& each : root->subviews()) {
    const std::vector<std::shared_ptr<NSView>> below = viewsBelow(each);
    views.insert(views.end(), below.begin(), below.end());
  }
  return views;
}

bool pressButtonWithKey(const std::shared_ptr<NSView>& root, std::string_view key) {
  for (const std::shared_ptr<NSButton>& button : viewsOfKind<NSButton>(root)) {
    if (button->keyEquivalent() != key) continue;
    button->performClick();
    return true;
  }
  return false;
}

}  // namespace ostra
