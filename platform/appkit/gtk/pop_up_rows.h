#pragma once
#include <gtk/gtk.h>

namespace ostra::gtk {

/// How a drop-down of `GtkStringObject`s shows its choice, and its list once it is open.
void setRows(GtkDropDown* dropDown);

/// What a screen reader says the drop-down is for. Before it is shown; the label must outlive it.
void labelDropDown(GtkDropDown* dropDown, GtkWidget* label);

/// A separator stands before this title in the list.
void markFirstOfGroup(GtkStringObject* title);

}  // namespace ostra::gtk
