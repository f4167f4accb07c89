#include "platform/appkit/gtk/button.h"

#include "platform/appkit/gtk/object.h"
#include "platform/appkit/gtk/text.h"

namespace ostra::gtk {

GtkWidget* makePushButton(const char* title) {
  GtkWidget* widget = gtk_button_new_with_label(title);
  // A name of its own instead of its label's: with both, GTK reads the title twice.
  gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL, title, -1);
  gtk_accessible_reset_relation(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_RELATION_LABELLED_BY);
  return widget;
}

GtkWidget* makeButton(const std::shared_ptr<NSButton>& button) {
  const ObjectRef<GtkWidget> widget(makePushButton(shownText(button->title()).c_str()));
  if (button->keyEquivalent() == kReturnKey) gtk_widget_add_css_class(widget.get(), "suggested-action");
  onSignal(widget.get(), "clicked", [kept = std::weak_ptr(button)] {
    if (const auto pressed = kept.lock()) pressed->performClick();
  });
  const auto show = [widget, shown = button.get()] {
    gtk_widget_set_sensitive(widget.get(), shown->isEnabled() ? TRUE : FALSE);
  };
  show();
  button->setObserver(show);
  return widget.get();
}

}  // namespace ostra::gtk
