#pragma once
#include <optional>
#include <string>

#include <gtk/gtk.h>

#include "platform/appkit/save_panel.h"

namespace ostra::gtk {

/// Asks for a file with GTK's own dialog and waits. Nothing when it was cancelled. `parent` may be null.
std::optional<std::string> chooseWithGtk(const NSSavePanel& panel, GtkWindow* parent);

/// What a type is called to the user, such as "PNG image".
std::string descriptionOf(const UTType& type);

}  // namespace ostra::gtk
