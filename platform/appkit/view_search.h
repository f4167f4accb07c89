#pragma once
#include <memory>
#include <string_view>
#include <vector>

#include "platform/appkit/button.h"

namespace ostra {

/// All views of a tree, the root first, each before what it holds, in their order.
std::vector<std::shared_ptr<NSView>> viewsBelow(const std::shared_ptr<NSView>& root);

/// Those of one kind.
template <class View>
std::vector<std::shared_ptr<View>> viewsOfKind(const std::shared_ptr<NSView>& root) {
  std::vector<std::shared_ptr<View>> chosen;
  for (const std::shared_ptr<NSView>& view : viewsBelow(root)) {
    if (auto one = std::dynamic_pointer_cast<View>(view)) chosen.push_back(std::move(one));
  }
  return chosen;
}

/// Presses the first button that has this key equivalent. False when none has it.
bool pressButtonWithKey(const std::shared_ptr<NSView>& root, std::string_view key);

}  // namespace ostra
