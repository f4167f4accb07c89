#pragma once
#include <gtk/gtk.h>

#include "platform/appkit/text_field.h"

namespace ostra::gtk {

/// The widget of a text, which follows the text's changes for as long as its observer is kept.
GtkWidget* makeLabel(NSTextField& text);

}  // namespace ostra::gtk
