// A window of GTK with nothing in it: what a panel's start is compared with.
#include <gtk/gtk.h>

int main() {
  gtk_init();
  GtkWidget* window = gtk_window_new();
  gtk_window_set_default_size(GTK_WINDOW(window), 460, 170);
  gtk_window_present(GTK_WINDOW(window));
  for (;;) g_main_context_iteration(nullptr, TRUE);
}
