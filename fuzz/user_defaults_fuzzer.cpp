// A settings file of any content: it is read, written to, and then holds what was written.
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/foundation/user_defaults.h"

namespace {

constexpr const char* kKey = "OstraQuickActionLastProfile";

/// In memory where the system has such a folder: every write is waited for.
std::string settingsFile() {
  std::string folder = (std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp");
  folder += "/ostra-fuzz-XXXXXX";
  if (mkdtemp(folder.data()) == nullptr) std::abort();
  setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
  std::filesystem::create_directory(folder + "/ostra");
  static const std::string made = folder;
  std::atexit([] { std::filesystem::remove_all(made); });
  return folder + "/ostra/defaults.plist";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = settingsFile();
  std::ofstream(path, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  ostra::NSUserDefaults& defaults = ostra::NSUserDefaults::standard();
  defaults.stringForKey(kKey);
  defaults.setString("Display P3", kKey);
  if (defaults.stringForKey(kKey) != "Display P3") std::abort();
  return 0;
}
