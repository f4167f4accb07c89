#include "tests/system/installed_program.h"

#include <filesystem>

namespace ostra::test {

namespace fs = std::filesystem;

InstalledProgram::InstalledProgram() : InstalledProgram(std::string()) {}

InstalledProgram::InstalledProgram(const std::string& home)
    : path_(folder_.path("bin/ostra")), home_(home.empty() ? folder_.path("home") : home) {
  fs::create_directories(folder_.path("bin"));
  fs::create_directories(folder_.path("share/ostra"));
  fs::create_directories(home_);
  fs::copy_file(OSTRA_PROGRAM, path_);
  fs::copy(OSTRA_BUNDLES, folder_.path("share/ostra/bundles"), fs::copy_options::recursive);
  fs::permissions(folder_.path(), fs::perms(0755));
  fs::permissions(home_, fs::perms(0777));
}

void InstalledProgram::installModules() const {
  fs::create_directory_symlink(OSTRA_MODULES, folder_.path("bin/modules"));
}

std::vector<std::string> InstalledProgram::environment() const {
  return {"HOME=" + home_, "XDG_CACHE_HOME=" + home_ + "/cache", "XDG_CONFIG_HOME=" + home_ + "/config",
          "LC_ALL=C.UTF-8"};
}

ProgramResult InstalledProgram::run(const std::vector<std::string>& arguments, ProgramOptions options) const {
  std::vector<std::string> words = {path_};
  words.insert(words.end(), arguments.begin(), arguments.end());
  for (const std::string& pair : environment()) options.environment.push_back(pair);
  return runProgram(words, options);
}

FaultedRun InstalledProgram::runWithFault(const std::vector<std::string>& arguments,
                                          const Injection& injection) const {
  std::vector<std::string> words = {path_};
  words.insert(words.end(), arguments.begin(), arguments.end());
  ProgramOptions options;
  options.environment = environment();
  return test::runWithFault(words, injection, options);
}

}  // namespace ostra::test
