#pragma once
#include <memory>

#include <gtk/gtk.h>

#include "platform/appkit/pop_up_button.h"

namespace ostra::gtk {

/// The widget of a pop-up. It chooses in the pop-up, which it does not keep alive, and follows its changes.
/// Opened, it can be typed into to find a title.
GtkWidget* makePopUp(const std::shared_ptr<NSPopUpButton>& popUp);

}  // namespace ostra::gtk
