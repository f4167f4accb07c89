#pragma once
#include "platform/appkit/gtk/progress_view.h"

namespace ostra::gtk {

/// The small window of work that goes on. It comes without taking the keyboard from whoever types elsewhere,
/// and closing it only puts it away.
class ProgressWindow {
 public:
  explicit ProgressWindow(const Progress& progress);
  ~ProgressWindow();
  ProgressWindow(const ProgressWindow&) = delete;
  ProgressWindow& operator=(const ProgressWindow&) = delete;

  GtkWindow* window() const { return window_.get(); }
  void show(const Progress& progress) { view_.show(progress); }
  bool isVisible() const { return gtk_widget_get_visible(GTK_WIDGET(window())) == TRUE; }
  void hide() { gtk_widget_set_visible(GTK_WIDGET(window()), FALSE); }

 private:
  ProgressView view_;
  ObjectRef<GtkWindow> window_;
};

}  // namespace ostra::gtk
