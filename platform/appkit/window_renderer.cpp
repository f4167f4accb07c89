#include "platform/appkit/window_renderer.h"

#include <cstdlib>

#include "platform/appkit/window_renderer_module.h"
#include "platform/foundation/module.h"

namespace ostra {
namespace {

Renderer* load(std::string& reason) {
  void* entry = moduleEntry("gtk4", "ostra_window_renderer", reason);
  if (entry == nullptr) {
    reason = "Windows cannot be shown: " + reason + ".";
    return nullptr;
  }
  return reinterpret_cast<decltype(&ostra_window_renderer)>(entry)(OSTRA_VERSION, &reason);
}

}  // namespace

void prepareForWindows() {
  // Our windows hold still: drawing them in software is soon done, while starting the graphics driver is not.
  setenv("GSK_RENDERER", "cairo", 0);
}

Renderer* windowRenderer(std::string& reason) {
  static std::string whyNot;
  static Renderer* const renderer = load(whyNot);
  reason = whyNot;
  return renderer;
}

}  // namespace ostra
