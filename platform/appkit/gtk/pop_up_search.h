#pragma once
#include <gtk/gtk.h>

namespace ostra::gtk {

/// Lets the open list of a drop-down be typed into wherever its focus is: the titles that begin so stay, and
/// Return chooses the first of them. The drop-down has its search enabled.
void searchByTyping(GtkDropDown* dropDown);

}  // namespace ostra::gtk
