#pragma once
#include <memory>

#include "platform/appkit/gtk/presented_window.h"
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
  /// Nothing yet: only a presented view tells that work goes on.
  void progress(const Progress&) override {}

 private:
  /// The presented window, when the user can see it; or null.
  GtkWindow* visibleWindow() const;

  std::unique_ptr<PresentedWindow> presented_;
};

}  // namespace ostra::gtk
