#include "tests/host/integration/home_folder.h"

#include <filesystem>
#include <sstream>

#include <sys/stat.h>

namespace ostra::test {

namespace fs = std::filesystem;

HomeFolder::HomeFolder() {
  fs::create_directories(home());
  fs::create_directories(system("/bin"));
}

void HomeFolder::write(const std::string& path, const std::string& text, unsigned mode) const {
  fs::create_directories(fs::path(path).parent_path());
  writeFile(path, std::string_view(text));
  chmod(path.c_str(), mode);
}

std::string HomeFolder::read(const std::string& path) const {
  const Bytes bytes = readFile(path);
  return {bytes.begin(), bytes.end()};
}

void HomeFolder::install(const std::string& fileManager) const {
  write(system("/bin/" + fileManager), "#!/bin/sh\n", 0755);
}

std::vector<std::string> HomeFolder::environment(const std::string& locale) const {
  // A folder that is given relatively counts for nothing.
  return {"HOME=" + home(),
          "XDG_DATA_HOME=",
          "XDG_CONFIG_HOME=relative",
          "XDG_DATA_DIRS=" + system("/share"),
          "XDG_CONFIG_DIRS=" + system("/etc"),
          "PATH=" + system("/bin"),
          "LANGUAGE=",
          "LC_ALL=" + locale};
}

std::map<std::string, std::string> HomeFolder::snapshot() const {
  std::map<std::string, std::string> found;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(home())) {
    struct stat status = {};
    lstat(entry.path().c_str(), &status);
    std::ostringstream text;
    text << std::oct << status.st_mode << ' ';
    if (entry.is_symlink()) {
      text << fs::read_symlink(entry.path()).string();
    } else if (entry.is_regular_file()) {
      text << read(entry.path().string());
    }
    found.emplace(entry.path().lexically_relative(home()).string(), text.str());
  }
  return found;
}

}  // namespace ostra::test
