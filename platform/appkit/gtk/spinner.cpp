#include "platform/appkit/gtk/spinner.h"

#include "platform/appkit/gtk/object.h"

namespace ostra::gtk {
namespace {

void show(GtkSpinner* spinner, const NSProgressIndicator& indicator) {
  const bool turns = indicator.isAnimating();
  gtk_spinner_set_spinning(spinner, turns ? TRUE : FALSE);
  gtk_widget_set_visible(GTK_WIDGET(spinner), turns || indicator.isDisplayedWhenStopped() ? TRUE : FALSE);
  gtk_accessible_update_state(GTK_ACCESSIBLE(spinner), GTK_ACCESSIBLE_STATE_BUSY, turns ? TRUE : FALSE, -1);
}

}  // namespace

GtkWidget* makeSpinner(NSProgressIndicator& indicator) {
  const ObjectRef<GtkWidget> widget(GTK_WIDGET(
      g_object_new(GTK_TYPE_SPINNER, "accessible-role", GTK_ACCESSIBLE_ROLE_PROGRESS_BAR, nullptr)));
  gtk_accessible_update_property(GTK_ACCESSIBLE(widget.get()), GTK_ACCESSIBLE_PROPERTY_LABEL, "Working", -1);
  show(GTK_SPINNER(widget.get()), indicator);
  indicator.setObserver([widget, &indicator] { show(GTK_SPINNER(widget.get()), indicator); });
  return widget.get();
}

}  // namespace ostra::gtk
