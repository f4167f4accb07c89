#pragma once
#include <memory>

#include <gtk/gtk.h>

#include "platform/appkit/button.h"

namespace ostra::gtk {

/// The widget of a button. It presses the button, which it does not keep alive, and follows its changes.
GtkWidget* makeButton(const std::shared_ptr<NSButton>& button);

/// A push button that reads its title to a screen reader, once.
GtkWidget* makePushButton(const char* title);

}  // namespace ostra::gtk
