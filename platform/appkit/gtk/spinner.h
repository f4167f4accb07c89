#pragma once
#include <gtk/gtk.h>

#include "platform/appkit/progress_indicator.h"

namespace ostra::gtk {

/// The widget of an indicator that turns, whatever its style: nothing says how much is done.
GtkWidget* makeSpinner(NSProgressIndicator& indicator);

}  // namespace ostra::gtk
