#pragma once
#include <string>

#include <gtk/gtk.h>

namespace ostra::gtk {

/// A window as other programs may name it for the length of a scope, to put a dialog of theirs over it.
class SurfaceHandle {
 public:
  /// `window` may be null. On Wayland it waits for the compositor.
  explicit SurfaceHandle(GtkWindow* window);
  ~SurfaceHandle();
  SurfaceHandle(const SurfaceHandle&) = delete;
  SurfaceHandle& operator=(const SurfaceHandle&) = delete;

  /// As portals take it; empty when there is none.
  const std::string& text() const { return text_; }

 private:
  void exportOnWayland(GdkSurface* surface);

  GdkSurface* exported_ = nullptr;
  std::string text_;
};

}  // namespace ostra::gtk
