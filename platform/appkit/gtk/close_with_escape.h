#pragma once
#include <gtk/gtk.h>

namespace ostra::gtk {

/// Lets Escape do what the window's close button does.
void closeWithEscape(GtkWindow* window);

}  // namespace ostra::gtk
