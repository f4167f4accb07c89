#pragma once
#include "platform/appkit/gtk/object.h"
#include "platform/appkit/renderer.h"

namespace ostra::gtk {

/// The item in work, a bar, and how many items are done.
class ProgressView {
 public:
  ProgressView();

  GtkWidget* root() const { return box_.get(); }
  void show(const Progress& progress);

 private:
  ObjectRef<GtkWidget> box_;
  GtkLabel* name_;
  GtkProgressBar* bar_;
  GtkLabel* count_;
};

}  // namespace ostra::gtk
