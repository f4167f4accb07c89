#include "platform/foundation/module.h"

#include <filesystem>

#include <dlfcn.h>

namespace ostra {
namespace {

namespace fs = std::filesystem;

/// Beside the program in a build, in the libraries' folder once installed.
fs::path pathOf(std::string_view name) {
  const std::string file = "ostra-" + std::string(name) + ".so";
  std::error_code ignored;
  const fs::path program = fs::read_symlink("/proc/self/exe", ignored).parent_path();
  for (const fs::path& folder : {program / "modules", program / ".." / OSTRA_LIBRARY_FOLDER / "ostra"}) {
    if (fs::exists(folder / file, ignored)) return folder / file;
  }
  return fs::path(OSTRA_FULL_LIBRARY_FOLDER) / "ostra" / file;
}

}  // namespace

bool moduleIsInstalled(std::string_view name) {
  std::error_code ignored;
  return fs::exists(pathOf(name), ignored);
}

void* moduleEntry(std::string_view name, const char* function, std::string& reason) {
  // What is missing shows here, not in the middle of the work.
  void* module = dlopen(pathOf(name).c_str(), RTLD_NOW | RTLD_LOCAL);
  void* entry = module == nullptr ? nullptr : dlsym(module, function);
  if (entry == nullptr) {
    const char* failure = dlerror();
    reason = failure == nullptr ? "no module" : failure;
  }
  return entry;
}

}  // namespace ostra
