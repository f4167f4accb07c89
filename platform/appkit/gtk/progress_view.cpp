#include "platform/appkit/gtk/progress_view.h"

#include "platform/appkit/gtk/text.h"

namespace ostra::gtk {
namespace {

constexpr int kSpacing = 6;
/// A name of any length takes this much room, so that nothing moves from one item to the next.
constexpr int kNameCharacters = 40;

GtkLabel* makeLine() {
  auto* label = GTK_LABEL(gtk_label_new(nullptr));
  gtk_label_set_xalign(label, 0);
  gtk_label_set_single_line_mode(label, TRUE);
  return label;
}

std::string countText(const Progress& progress) {
  return std::to_string(progress.done) + " of " + std::to_string(progress.total) + " done";
}

}  // namespace

ProgressView::ProgressView()
    : box_(gtk_box_new(GTK_ORIENTATION_VERTICAL, kSpacing)),
      name_(makeLine()),
      bar_(GTK_PROGRESS_BAR(gtk_progress_bar_new())),
      count_(makeLine()) {
  // The end of a name tells pictures of a camera apart.
  gtk_label_set_ellipsize(name_, PANGO_ELLIPSIZE_MIDDLE);
  gtk_label_set_width_chars(name_, kNameCharacters);
  gtk_label_set_max_width_chars(name_, kNameCharacters);
  gtk_accessible_update_property(GTK_ACCESSIBLE(bar_), GTK_ACCESSIBLE_PROPERTY_LABEL, "Progress", -1);
  gtk_widget_add_css_class(GTK_WIDGET(count_), "dim-label");
  gtk_widget_add_css_class(GTK_WIDGET(count_), "numeric");
  gtk_box_append(GTK_BOX(root()), GTK_WIDGET(name_));
  gtk_box_append(GTK_BOX(root()), GTK_WIDGET(bar_));
  gtk_box_append(GTK_BOX(root()), GTK_WIDGET(count_));
}

void ProgressView::show(const Progress& progress) {
  gtk_label_set_text(name_, shownText(progress.name).c_str());
  gtk_label_set_text(count_, countText(progress).c_str());
  gtk_progress_bar_set_fraction(bar_,
                                static_cast<double>(progress.done) / static_cast<double>(progress.total));
}

}  // namespace ostra::gtk
