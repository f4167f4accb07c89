#include "platform/appkit/gtk/pop_up_rows.h"

#include "platform/appkit/gtk/object.h"

namespace ostra::gtk {
namespace {

constexpr const char* kFirstOfGroup = "ostra-first-of-group";
constexpr const char* kLabel = "ostra-label";
constexpr int kMostCharacters = 60;

constexpr const char* kStyle =
    ".ostra-first-of-group { border-top: 1px solid alpha(currentColor, 0.2); margin-top: 6px; padding-top: "
    "12px; }";

/// The separator is a line of the row itself: hundreds of rows are made before the first frame, of few
/// widgets each.
void addStyle() {
  const auto style = ObjectRef<GtkCssProvider>::adopting(gtk_css_provider_new());
  gtk_css_provider_load_from_data(style.get(), kStyle, -1);
  gtk_style_context_add_provider_for_display(gdk_display_get_default(), GTK_STYLE_PROVIDER(style.get()),
                                             GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

void separate(GtkWidget* row, bool separated) {
  if (separated) {
    gtk_widget_add_css_class(row, kFirstOfGroup);
  } else {
    gtk_widget_remove_css_class(row, kFirstOfGroup);
  }
}

GtkWidget* makeTitle() {
  GtkWidget* title = gtk_label_new(nullptr);
  gtk_label_set_xalign(GTK_LABEL(title), 0);
  gtk_label_set_ellipsize(GTK_LABEL(title), PANGO_ELLIPSIZE_END);
  gtk_widget_set_hexpand(title, TRUE);
  return title;
}

void makeRow(GtkListItem* item) {
  GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 6);
  gtk_box_append(GTK_BOX(row), makeTitle());
  gtk_list_item_set_child(item, row);
}

/// The row's second part; made when a title is chosen for the first time.
GtkWidget* markOf(GtkWidget* row, bool chosen) {
  GtkWidget* mark = gtk_widget_get_next_sibling(gtk_widget_get_first_child(row));
  if (mark != nullptr || !chosen) return mark;
  mark = GTK_WIDGET(g_object_new(GTK_TYPE_IMAGE, "accessible-role", GTK_ACCESSIBLE_ROLE_PRESENTATION,
                                 "icon-name", "object-select-symbolic", nullptr));
  gtk_box_append(GTK_BOX(row), mark);
  return mark;
}

void showRow(GtkListItem* item, GtkDropDown* dropDown) {
  auto* shown = GTK_STRING_OBJECT(gtk_list_item_get_item(item));
  if (shown == nullptr) return;
  GtkWidget* row = gtk_list_item_get_child(item);
  GtkLabel* label = GTK_LABEL(gtk_widget_get_first_child(row));
  const char* title = gtk_string_object_get_string(shown);
  gtk_label_set_text(label, title);
  gtk_label_set_width_chars(label, MIN(static_cast<int>(g_utf8_strlen(title, -1)), kMostCharacters));
  // What was typed may have left nothing above it.
  separate(row, g_object_get_data(G_OBJECT(shown), kFirstOfGroup) != nullptr &&
                    gtk_list_item_get_position(item) > 0);
  const bool chosen = gtk_drop_down_get_selected_item(dropDown) == shown;
  if (GtkWidget* mark = markOf(row, chosen)) gtk_widget_set_visible(mark, chosen ? TRUE : FALSE);
  gtk_accessible_update_property(GTK_ACCESSIBLE(gtk_widget_get_parent(row)), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                 title, -1);
}

/// Rows stay while another title is chosen.
void followChoice(GtkListItem* item, GtkDropDown* dropDown) {
  g_signal_connect_object(dropDown, "notify::selected-item",
                          G_CALLBACK(+[](GtkDropDown* owner, GParamSpec*, gpointer row) {
                            showRow(static_cast<GtkListItem*>(row), owner);
                          }),
                          item, static_cast<GConnectFlags>(0));
}

/// The part of a drop-down that gets the focus.
GtkWidget* buttonOf(GtkDropDown* dropDown) { return gtk_widget_get_first_child(GTK_WIDGET(dropDown)); }

/// What the button is for, when that is known, and what is chosen: "Profile: sRGB".
void nameButton(GtkDropDown* dropDown, GtkWidget* choice) {
  auto* label = static_cast<GtkWidget*>(g_object_get_data(G_OBJECT(dropDown), kLabel));
  gtk_accessible_update_relation(GTK_ACCESSIBLE(buttonOf(dropDown)), GTK_ACCESSIBLE_RELATION_LABELLED_BY,
                                 label == nullptr ? choice : label, label == nullptr ? nullptr : choice,
                                 nullptr, -1);
}

void makeChoice(GtkListItem* item, GtkDropDown* dropDown) {
  GtkWidget* title = makeTitle();
  gtk_list_item_set_child(item, title);
  nameButton(dropDown, title);
}

void showChoice(GtkListItem* item) {
  auto* shown = GTK_STRING_OBJECT(gtk_list_item_get_item(item));
  gtk_label_set_text(GTK_LABEL(gtk_list_item_get_child(item)), gtk_string_object_get_string(shown));
}

using ItemHandler = void (*)(GtkSignalListItemFactory*, GtkListItem*, gpointer);

GtkListItemFactory* makeFactory(ItemHandler setUp, ItemHandler bind, gpointer data) {
  GtkListItemFactory* factory = gtk_signal_list_item_factory_new();
  g_signal_connect(factory, "setup", G_CALLBACK(setUp), data);
  g_signal_connect(factory, "bind", G_CALLBACK(bind), data);
  return factory;
}

}  // namespace

void setRows(GtkDropDown* dropDown) {
  addStyle();
  const auto choice = ObjectRef<GtkListItemFactory>::adopting(makeFactory(
      [](GtkSignalListItemFactory*, GtkListItem* item, gpointer owner) {
        makeChoice(item, static_cast<GtkDropDown*>(owner));
      },
      [](GtkSignalListItemFactory*, GtkListItem* item, gpointer) { showChoice(item); }, dropDown));
  const auto rows = ObjectRef<GtkListItemFactory>::adopting(makeFactory(
      [](GtkSignalListItemFactory*, GtkListItem* item, gpointer owner) {
        makeRow(item);
        followChoice(item, static_cast<GtkDropDown*>(owner));
      },
      [](GtkSignalListItemFactory*, GtkListItem* item, gpointer owner) {
        showRow(item, static_cast<GtkDropDown*>(owner));
      },
      dropDown));
  gtk_drop_down_set_factory(dropDown, choice.get());
  gtk_drop_down_set_list_factory(dropDown, rows.get());
}

void labelDropDown(GtkDropDown* dropDown, GtkWidget* label) {
  g_object_set_data(G_OBJECT(dropDown), kLabel, label);
  gtk_accessible_update_relation(GTK_ACCESSIBLE(dropDown), GTK_ACCESSIBLE_RELATION_LABELLED_BY, label,
                                 nullptr, -1);
}

void markFirstOfGroup(GtkStringObject* title) {
  g_object_set_data(G_OBJECT(title), kFirstOfGroup, GINT_TO_POINTER(1));
}

}  // namespace ostra::gtk
