#pragma once
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "platform/appkit/control.h"

namespace ostra {

/// One line of a pop-up: a title that can be chosen, or a separator.
struct NSMenuItem {
  std::string title;
  int tag = 0;
  bool isSeparator = false;

  static NSMenuItem separatorItem() { return {"", 0, true}; }
};

/// A button that shows the chosen item and pops up the others. Items are known by their tags: separators
/// count among the positions.
class NSPopUpButton : public NSControl {
 public:
  NSPopUpButton() : NSControl(NSRect{}) {}

  const std::vector<NSMenuItem>& items() const { return items_; }
  /// Nothing is chosen afterwards.
  void removeAllItems();
  /// The first item that is no separator becomes the choice when there is none.
  void addItem(NSMenuItem item);

  /// The position among `items`.
  std::optional<std::size_t> indexOfSelectedItem() const { return selected_; }
  /// Null when nothing is chosen. Valid until the items change.
  const NSMenuItem* selectedItem() const;
  /// A separator is never chosen; false, and no change, when no item has that tag.
  bool selectItemWithTag(int tag);
  /// No item is chosen.
  void deselect();

 private:
  std::vector<NSMenuItem> items_;
  std::optional<std::size_t> selected_;
};

}  // namespace ostra
