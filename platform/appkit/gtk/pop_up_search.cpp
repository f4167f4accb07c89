#include "platform/appkit/gtk/pop_up_search.h"

#include "platform/appkit/gtk/object.h"

namespace ostra::gtk {
namespace {

/// The first widget of a type among those below another, or null.
GtkWidget* below(GtkWidget* widget, GType type) {
  for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    if (G_TYPE_CHECK_INSTANCE_TYPE(child, type)) return child;
    if (GtkWidget* found = below(child, type)) return found;
  }
  return nullptr;
}

bool isEmpty(GtkListView* list) {
  return g_list_model_get_n_items(G_LIST_MODEL(gtk_list_view_get_model(list))) == 0;
}

void nameEntry(GtkWidget* entry) {
  char* hint = nullptr;
  g_object_get(entry, "placeholder-text", &hint, nullptr);
  if (hint != nullptr) {
    gtk_accessible_update_property(GTK_ACCESSIBLE(entry), GTK_ACCESSIBLE_PROPERTY_LABEL, hint, -1);
  }
  g_free(hint);
}

/// Once something is typed, what follows is text too: a blank would choose in the list.
void takeFocus(GtkEditable* entry) {
  GtkWidget* text = GTK_WIDGET(gtk_editable_get_delegate(entry));
  if (*gtk_editable_get_text(entry) == '\0' || gtk_widget_has_focus(text) == TRUE) return;
  gtk_text_grab_focus_without_selecting(GTK_TEXT(text));
  gtk_editable_set_position(entry, -1);
}

}  // namespace

void searchByTyping(GtkDropDown* dropDown) {
  GtkWidget* popover = below(GTK_WIDGET(dropDown), GTK_TYPE_POPOVER);
  GtkWidget* entry = popover == nullptr ? nullptr : below(popover, GTK_TYPE_SEARCH_ENTRY);
  GtkWidget* list = popover == nullptr ? nullptr : below(popover, GTK_TYPE_LIST_VIEW);
  if (entry == nullptr || list == nullptr) return;  // another GTK's drop-down, which then does as it does
  nameEntry(entry);
  gtk_search_entry_set_key_capture_widget(GTK_SEARCH_ENTRY(entry), popover);
  onSignal(entry, "changed", [entry] { takeFocus(GTK_EDITABLE(entry)); });
  onSignal(entry, "activate", [list] {
    if (!isEmpty(GTK_LIST_VIEW(list))) g_signal_emit_by_name(list, "activate", 0U);
  });
}

}  // namespace ostra::gtk
