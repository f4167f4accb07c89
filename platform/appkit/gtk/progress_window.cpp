#include "platform/appkit/gtk/progress_window.h"

#ifdef GDK_WINDOWING_X11
#include <gdk/x11/gdkx.h>
#endif

#include "platform/appkit/gtk/close_with_escape.h"
#include "platform/appkit/gtk/text.h"

namespace ostra::gtk {
namespace {

constexpr int kMargin = 18;

/// Window managers give no focus to a window that no action of the user brought up.
void askForNoFocus([[maybe_unused]] GtkWindow* window) {
#ifdef GDK_WINDOWING_X11
  gtk_widget_realize(GTK_WIDGET(window));
  GdkSurface* surface = gtk_native_get_surface(GTK_NATIVE(window));
  if (GDK_IS_X11_SURFACE(surface)) gdk_x11_surface_set_user_time(surface, 0);
#endif
}

GtkWindow* makeWindow(const std::string& title) {
  auto* window = GTK_WINDOW(gtk_window_new());
  gtk_window_set_title(window, title.c_str());
  gtk_window_set_titlebar(window, gtk_header_bar_new());
  gtk_window_set_resizable(window, FALSE);
  closeWithEscape(window);
  return window;
}

}  // namespace

ProgressWindow::ProgressWindow(const Progress& progress) : window_(makeWindow(shownText(progress.title))) {
  GtkWidget* box = view_.root();
  gtk_widget_set_margin_start(box, kMargin);
  gtk_widget_set_margin_end(box, kMargin);
  gtk_widget_set_margin_top(box, kMargin);
  gtk_widget_set_margin_bottom(box, kMargin);
  gtk_window_set_child(window(), box);
  onQuestion(window(), "close-request", [this] {
    hide();
    return true;
  });
  show(progress);
  askForNoFocus(window());
  gtk_widget_set_visible(GTK_WIDGET(window()), TRUE);
}

ProgressWindow::~ProgressWindow() { gtk_window_destroy(window()); }

}  // namespace ostra::gtk
