#include "platform/foundation/module.h"

#include <filesystem>

#include <dlfcn.h>

namespace ostra {
namespace {

namespace fs = std::filesystem;

/// Asked for with every picture. Throws `fs::filesystem_error` when it cannot be told, and is asked again
/// then.
const fs::path& programFolder() {
  static const fs::path folder = fs::read_symlink("/proc/self/exe").parent_path();
  return folder;
}

/// Beside the program in a build, in the libraries' folder once installed. Throws `fs::filesystem_error` when
/// it cannot be told where that is.
fs::path pathOf(std::string_view name) {
  const std::string file = "ostra-" + std::string(name) + ".so";
  const fs::path& program = programFolder();
  for (const fs::path& folder : {program / "modules", program / ".." / OSTRA_LIBRARY_FOLDER / "ostra"}) {
    if (fs::exists(folder / file)) return folder / file;
  }
  return fs::path(OSTRA_FULL_LIBRARY_FOLDER) / "ostra" / file;
}

}  // namespace

bool moduleIsInstalled(std::string_view name) { return fs::exists(pathOf(name)); }

void* moduleEntry(std::string_view name, const char* function, std::string& reason) {
  try {
    // What is missing shows here, not in the middle of the work.
    void* module = dlopen(pathOf(name).c_str(), RTLD_NOW | RTLD_LOCAL);
    void* entry = module == nullptr ? nullptr : dlsym(module, function);
    if (entry != nullptr) return entry;
    const char* failure = dlerror();
    reason = failure == nullptr ? "no module" : failure;
  } catch (const fs::filesystem_error& error) {
    reason = error.what();
  }
  return nullptr;
}

}  // namespace ostra
