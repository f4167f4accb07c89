#include "platform/appkit/gtk/view_tree.h"

#include <cmath>

#include "platform/appkit/gtk/button.h"
#include "platform/appkit/gtk/label.h"
#include "platform/appkit/gtk/layout.h"
#include "platform/appkit/gtk/pop_up.h"
#include "platform/appkit/gtk/pop_up_rows.h"
#include "platform/appkit/gtk/spinner.h"
#include "platform/appkit/view_search.h"

namespace ostra::gtk {
namespace {

int pixels(double points) { return static_cast<int>(std::lround(points)); }

/// A plain view takes what room is left along its stack.
bool isSpacer(const NSView& view) { return typeid(view) == typeid(NSView) && view.subviews().empty(); }

void place(GtkWidget* widget, const Placement& placement) {
  gtk_widget_set_margin_start(widget, pixels(placement.leading.value_or(0)));
  gtk_widget_set_margin_end(widget, pixels(placement.trailing.value_or(0)));
  gtk_widget_set_margin_top(widget, pixels(placement.top.value_or(0)));
  gtk_widget_set_margin_bottom(widget, pixels(placement.bottom.value_or(0)));
  if (placement.fillsWidth()) gtk_widget_set_hexpand(widget, TRUE);
  if (placement.fillsHeight()) gtk_widget_set_vexpand(widget, TRUE);
}

void placeInColumn(GtkWidget* widget, const NSView& view, const Placement& placement) {
  if (isSpacer(view)) gtk_widget_set_vexpand(widget, TRUE);
  gtk_widget_set_halign(widget, placement.fillsWidth() ? GTK_ALIGN_FILL : GTK_ALIGN_START);
}

void placeInRow(GtkWidget* widget, const NSView& view) {
  if (isSpacer(view)) gtk_widget_set_hexpand(widget, TRUE);
  gtk_widget_set_valign(widget, GTK_ALIGN_CENTER);
}

}  // namespace

ViewTree::ViewTree(std::shared_ptr<NSView> root) : root_(std::move(root)) { make(root_); }

ViewTree::~ViewTree() {
  for (const auto& view : viewsBelow(root_)) view->setObserver(nullptr);
}

GtkWidget* ViewTree::make(const std::shared_ptr<NSView>& view) {
  GtkWidget* widget = makeByKind(view);
  place(widget, placementOf(*view));
  widgets_.emplace(view.get(), ObjectRef<GtkWidget>(widget));
  return widget;
}

GtkWidget* ViewTree::makeByKind(const std::shared_ptr<NSView>& view) {
  if (auto* text = dynamic_cast<NSTextField*>(view.get())) return makeLabel(*text);
  if (auto* indicator = dynamic_cast<NSProgressIndicator*>(view.get())) return makeSpinner(*indicator);
  if (const auto popUp = std::dynamic_pointer_cast<NSPopUpButton>(view)) return makePopUp(popUp);
  if (const auto button = std::dynamic_pointer_cast<NSButton>(view)) return makeButton(button);
  if (auto* stack = dynamic_cast<NSStackView*>(view.get())) return makeStack(*stack);
  return makeContainer(*view);
}

GtkWidget* ViewTree::makeContainer(NSView& view) {
  GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  for (const auto& subview : view.subviews()) gtk_box_append(GTK_BOX(box), make(subview));
  return box;
}

GtkWidget* ViewTree::makeStack(NSStackView& stack) {
  const bool isRow = stack.orientation() == NSUserInterfaceLayoutOrientation::horizontal;
  GtkWidget* box =
      gtk_box_new(isRow ? GTK_ORIENTATION_HORIZONTAL : GTK_ORIENTATION_VERTICAL, pixels(stack.spacing()));
  for (const auto& view : stack.subviews()) {
    GtkWidget* widget = make(view);
    if (isRow) {
      placeInRow(widget, *view);
    } else {
      placeInColumn(widget, *view, placementOf(*view));
    }
    gtk_box_append(GTK_BOX(box), widget);
  }
  if (isRow) nameByLabel(stack);
  return box;
}

void ViewTree::nameByLabel(const NSStackView& row) const {
  const NSView* before = nullptr;
  for (const auto& view : row.subviews()) {
    const bool isNamed = dynamic_cast<const NSPopUpButton*>(view.get()) != nullptr;
    if (isNamed && dynamic_cast<const NSTextField*>(before) != nullptr) {
      labelDropDown(GTK_DROP_DOWN(widgetOf(*view)), widgetOf(*before));
    }
    before = view.get();
  }
}

std::shared_ptr<NSButton> ViewTree::buttonOf(std::string_view key) const {
  for (const auto& button : viewsOfKind<NSButton>(root_)) {
    if (button->keyEquivalent() == key) return button;
  }
  return nullptr;
}

}  // namespace ostra::gtk
