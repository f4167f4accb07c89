#include "platform/appkit/pop_up_button.h"

#include <algorithm>

namespace ostra {

void NSPopUpButton::removeAllItems() {
  items_.clear();
  selected_.reset();
  changed();
}

void NSPopUpButton::addItem(NSMenuItem item) {
  if (!item.isSeparator && !selected_) selected_ = items_.size();
  items_.push_back(std::move(item));
  changed();
}

const NSMenuItem* NSPopUpButton::selectedItem() const { return selected_ ? &items_[*selected_] : nullptr; }

bool NSPopUpButton::selectItemWithTag(int tag) {
  const auto found = std::find_if(items_.begin(), items_.end(), [tag](const NSMenuItem& item) {
    return !item.isSeparator && item.tag == tag;
  });
  if (found == items_.end()) return false;
  selected_ = static_cast<std::size_t>(found - items_.begin());
  changed();
  return true;
}

void NSPopUpButton::deselect() {
  selected_.reset();
  changed();
}

}  // namespace ostra
