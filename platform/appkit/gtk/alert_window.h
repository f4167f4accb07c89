#pragma once
#include <string>

#include "platform/appkit/alert.h"
#include "platform/appkit/gtk/object.h"

namespace ostra::gtk {

/// Shows an alert and waits until it is dismissed. The position of the button that was pressed; the last
/// one's when it was closed without, or cancelled. `parent` may be null.
std::size_t runAlert(const NSAlert& alert, GtkWindow* parent);

}  // namespace ostra::gtk
