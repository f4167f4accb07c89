#pragma once
#include <optional>

#include <gtk/gtk.h>

#include "platform/appkit/save_panel.h"

namespace ostra::gtk {

/// Shows a save panel and waits for its answer: the desktop's own where a portal offers one, else GTK's. A
/// file of an allowed type, whose extension is put after a name that has another; nothing when it was
/// cancelled. Nothing is replaced without having been asked. `parent` may be null.
std::optional<URL> askWhereToSave(const NSSavePanel& panel, GtkWindow* parent);

}  // namespace ostra::gtk
