#include "platform/appkit/gtk/close_with_escape.h"

namespace ostra::gtk {

void closeWithEscape(GtkWindow* window) {
  GtkEventController* keys = gtk_shortcut_controller_new();
  gtk_shortcut_controller_add_shortcut(
      GTK_SHORTCUT_CONTROLLER(keys),
      gtk_shortcut_new(gtk_keyval_trigger_new(GDK_KEY_Escape, static_cast<GdkModifierType>(0)),
                       gtk_named_action_new("window.close")));
  gtk_widget_add_controller(GTK_WIDGET(window), keys);
}

}  // namespace ostra::gtk
