#include "host/data_folder.h"

#include <filesystem>

#include "host/usage_error.h"

namespace ostra {

namespace fs = std::filesystem;

std::string programPath() {
  std::error_code failure;
  const fs::path program = fs::canonical("/proc/self/exe", failure);
  if (failure) throw UsageError("The program is no longer where it was started from.");
  return program.string();
}

std::string dataFolder(std::string_view name) {
  std::error_code ignored;
  const fs::path program = fs::read_symlink("/proc/self/exe", ignored).parent_path();
  for (const fs::path& folder : {program, program / "../share/ostra"}) {
    if (fs::is_directory(folder / name, ignored)) return (folder / name).string();
  }
  return OSTRA_DATA_FOLDER "/" + std::string(name);
}

}  // namespace ostra
