#pragma once
#include <map>
#include <memory>
#include <string_view>

#include "platform/appkit/button.h"
#include "platform/appkit/gtk/object.h"
#include "platform/appkit/stack_view.h"

namespace ostra::gtk {

/// The widgets of a view and of all that is below it. They follow the views until this is destroyed.
class ViewTree {
 public:
  explicit ViewTree(std::shared_ptr<NSView> root);
  ~ViewTree();
  ViewTree(const ViewTree&) = delete;
  ViewTree& operator=(const ViewTree&) = delete;

  GtkWidget* root() const { return widgets_.at(root_.get()).get(); }
  GtkWidget* widgetOf(const NSView& view) const { return widgets_.at(&view).get(); }
  /// The first button that has this key equivalent, enabled or not; or null.
  std::shared_ptr<NSButton> buttonOf(std::string_view key) const;

 private:
  GtkWidget* make(const std::shared_ptr<NSView>& view);
  GtkWidget* makeByKind(const std::shared_ptr<NSView>& view);
  GtkWidget* makeContainer(NSView& view);
  GtkWidget* makeStack(NSStackView& stack);
  void nameByLabel(const NSStackView& row) const;

  const std::shared_ptr<NSView> root_;
  std::map<const NSView*, ObjectRef<GtkWidget>> widgets_;
};

}  // namespace ostra::gtk
