#include "platform/appkit/gtk/label.h"

#include "platform/appkit/gtk/object.h"
#include "platform/appkit/gtk/text.h"

namespace ostra::gtk {
namespace {

/// Relative to the user's own font, whatever its size is.
void applyFont(GtkLabel* label, const NSFont& font) {
  PangoAttrList* attributes = pango_attr_list_new();
  pango_attr_list_insert(attributes, pango_attr_scale_new(font.pointSize / NSFont::systemFontSize()));
  if (font.bold) pango_attr_list_insert(attributes, pango_attr_weight_new(PANGO_WEIGHT_BOLD));
  gtk_label_set_attributes(label, attributes);
  pango_attr_list_unref(attributes);
}

void applyColor(GtkWidget* label, NSColor color) {
  if (color == NSColor::secondaryLabelColor) {
    gtk_widget_add_css_class(label, "dim-label");
  } else {
    gtk_widget_remove_css_class(label, "dim-label");
  }
}

void wrap(GtkLabel* label) {
  gtk_label_set_wrap(label, TRUE);
  gtk_label_set_wrap_mode(label, PANGO_WRAP_WORD_CHAR);
  // The least that it may ask for: its neighbours and the window say how wide it becomes.
  gtk_label_set_max_width_chars(label, 1);
}

void show(GtkLabel* label, const NSTextField& text) {
  gtk_label_set_text(label, shownText(text.stringValue()).c_str());
  applyFont(label, text.font());
  applyColor(GTK_WIDGET(label), text.textColor());
}

}  // namespace

GtkWidget* makeLabel(NSTextField& text) {
  const ObjectRef<GtkWidget> widget(gtk_label_new(nullptr));
  GtkLabel* label = GTK_LABEL(widget.get());
  gtk_label_set_xalign(label, 0);
  if (text.wraps()) wrap(label);
  show(label, text);
  text.setObserver([widget, &text] { show(GTK_LABEL(widget.get()), text); });
  return widget.get();
}

}  // namespace ostra::gtk
