#include "platform/appkit/gtk/surface_handle.h"

#include <cinttypes>
#include <cstdio>

#ifdef GDK_WINDOWING_X11
#include <gdk/x11/gdkx.h>
#endif
#ifdef GDK_WINDOWING_WAYLAND
#include <gdk/wayland/gdkwayland.h>
#endif

#include "platform/appkit/gtk/main_loop.h"

namespace ostra::gtk {
namespace {

#ifdef GDK_WINDOWING_X11
std::string textOnX11(GdkSurface* surface) {
  char text[32];
  std::snprintf(text, sizeof text, "x11:%lx", gdk_x11_surface_get_xid(surface));
  return text;
}
#endif

}  // namespace

SurfaceHandle::SurfaceHandle(GtkWindow* window) {
  GdkSurface* surface = window == nullptr ? nullptr : gtk_native_get_surface(GTK_NATIVE(window));
  if (surface == nullptr) return;
#ifdef GDK_WINDOWING_X11
  if (GDK_IS_X11_SURFACE(surface)) text_ = textOnX11(surface);
#endif
  exportOnWayland(surface);
}

#ifdef GDK_WINDOWING_WAYLAND

void SurfaceHandle::exportOnWayland(GdkSurface* surface) {
  if (!GDK_IS_WAYLAND_TOPLEVEL(surface)) return;
  struct Export {
    ModalRun run;
    std::string handle;
  };
  auto* exporting = new Export;  // until the surface is no longer exported
  const gboolean begun = gdk_wayland_toplevel_export_handle(
      GDK_TOPLEVEL(surface),
      [](GdkToplevel*, const char* handle, gpointer kept) {
        auto* waiting = static_cast<Export*>(kept);
        if (handle != nullptr) waiting->handle = std::string("wayland:") + handle;
        waiting->run.end();
      },
      exporting, [](gpointer kept) { delete static_cast<Export*>(kept); });
  if (begun == FALSE) return;
  exported_ = surface;
  exporting->run.wait();
  text_ = exporting->handle;
}

SurfaceHandle::~SurfaceHandle() {
  if (exported_ != nullptr) gdk_wayland_toplevel_unexport_handle(GDK_TOPLEVEL(exported_));
}

#else

void SurfaceHandle::exportOnWayland(GdkSurface*) {}
SurfaceHandle::~SurfaceHandle() = default;

#endif

}  // namespace ostra::gtk
