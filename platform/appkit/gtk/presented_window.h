#pragma once
#include <memory>
#include <string>

#include "platform/appkit/gtk/progress_view.h"
#include "platform/appkit/gtk/view_tree.h"
#include "platform/appkit/view_controller.h"

namespace ostra::gtk {

/// The window of a controller's view, shown from the start.
class PresentedWindow {
 public:
  PresentedWindow(std::shared_ptr<NSViewController> controller, const std::string& title);
  ~PresentedWindow();
  PresentedWindow(const PresentedWindow&) = delete;
  PresentedWindow& operator=(const PresentedWindow&) = delete;

  GtkWindow* window() const { return window_.get(); }
  bool isVisible() const;
  void hide();
  /// Below the view, which is the controller's own.
  void showProgress(const Progress& progress);
  void endProgress();

 private:
  void setSize() const;
  void setKeys();
  /// True when a button has the key and takes it.
  bool press(guint key, GdkModifierType modifiers) const;
  void close();

  const std::shared_ptr<NSViewController> controller_;
  const ViewTree views_;
  ObjectRef<GtkWidget> content_;
  ObjectRef<GtkWindow> window_;
  std::unique_ptr<ProgressView> progress_;
};

}  // namespace ostra::gtk
