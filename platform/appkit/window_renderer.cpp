#include "platform/appkit/window_renderer.h"

#include <filesystem>

#include <dlfcn.h>

#include "platform/appkit/window_renderer_module.h"

namespace ostra {
namespace {

namespace fs = std::filesystem;

constexpr const char* kModule = "ostra-gtk4.so";

/// Beside the program in a build, in the libraries' folder once installed.
fs::path modulePath() {
  std::error_code ignored;
  const fs::path program = fs::read_symlink("/proc/self/exe", ignored).parent_path();
  for (const fs::path& folder : {program / "modules", program / ".." / OSTRA_LIBRARY_FOLDER / "ostra"}) {
    if (fs::exists(folder / kModule, ignored)) return folder / kModule;
  }
  return fs::path(OSTRA_FULL_LIBRARY_FOLDER) / "ostra" / kModule;
}

Renderer* load(std::string& reason) {
  // Never closed: GTK cannot be unloaded. What is missing shows here, not in the middle of the work.
  void* module = dlopen(modulePath().c_str(), RTLD_NOW | RTLD_LOCAL);
  void* entry = module == nullptr ? nullptr : dlsym(module, "ostra_window_renderer");
  if (entry == nullptr) {
    const char* failure = dlerror();
    reason = std::string("Windows cannot be shown: ") + (failure == nullptr ? "no module" : failure) + ".";
    return nullptr;
  }
  return reinterpret_cast<decltype(&ostra_window_renderer)>(entry)(OSTRA_VERSION, &reason);
}

}  // namespace

Renderer* windowRenderer(std::string& reason) {
  static std::string whyNot;
  static Renderer* const renderer = load(whyNot);
  reason = whyNot;
  return renderer;
}

}  // namespace ostra
