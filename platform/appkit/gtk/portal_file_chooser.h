#pragma once
#include <optional>
#include <string>

#include <gtk/gtk.h>

#include "platform/appkit/save_panel.h"

namespace ostra::gtk {

struct PortalAnswer {
  /// False: no portal put the question.
  bool wasAsked = false;
  /// Nothing when the user cancelled.
  std::optional<std::string> path;
};

/// Asks for a file with the desktop's own dialog, through its portal, and waits. The portal has no place for
/// the panel's message. `parent` may be null.
PortalAnswer chooseWithPortal(const NSSavePanel& panel, GtkWindow* parent);

}  // namespace ostra::gtk
