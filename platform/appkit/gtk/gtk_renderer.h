#pragma once
#include <memory>

#include "platform/appkit/gtk/presented_window.h"
#include "platform/appkit/gtk/progress_window.h"
#include "platform/appkit/renderer.h"

namespace ostra::gtk {

/// Shows everything in windows of GTK 4. It needs a display, and the main queue waiting in GLib's context.
class GtkRenderer : public Renderer {
 public:
  void activate() override;
  void beep() override;
  void run(const NSAlert& alert) override;
  SavePanelAnswer run(const NSSavePanel& panel) override;
  /// A controller that was presented before leaves the screen.
  bool present(const std::shared_ptr<NSViewController>& controller, const std::string& title) override;
  void withdraw() override;
  /// In the window of what is presented, else in one of its own. None of them comes back once it was closed,
  /// and none comes after an alert.
  bool progress(const Progress& progress) override;
  void notify(const std::string& title, const std::string& text) override;

 private:
  /// The window that the user can see, of what is presented or of the progress; or null.
  GtkWindow* visibleWindow() const;
  void showProgress(const Progress& progress);
  void endProgress();

  std::unique_ptr<PresentedWindow> presented_;
  std::unique_ptr<ProgressWindow> progress_;
  bool alerted_ = false;
};

}  // namespace ostra::gtk
