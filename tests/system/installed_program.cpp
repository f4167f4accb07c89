#include "tests/system/installed_program.h"

#include <filesystem>

namespace ostra::test {

namespace fs = std::filesystem;

InstalledProgram::InstalledProgram() : path_(folder_.path("bin/ostra")) {
  fs::create_directories(folder_.path("bin"));
  fs::create_directories(folder_.path("share/ostra"));
  fs::create_directories(folder_.path("home"));
  fs::copy_file(OSTRA_PROGRAM, path_);
  fs::copy(OSTRA_BUNDLES, folder_.path("share/ostra/bundles"), fs::copy_options::recursive);
  fs::permissions(folder_.path(), fs::perms(0755));
  fs::permissions(folder_.path("home"), fs::perms(0777));
}

std::vector<std::string> InstalledProgram::environment() const {
  const std::string home = folder_.path("home");
  return {"HOME=" + home, "XDG_CACHE_HOME=" + home + "/cache", "XDG_CONFIG_HOME=" + home + "/config",
          "LC_ALL=C.UTF-8"};
}

ProgramResult InstalledProgram::run(const std::vector<std::string>& arguments, ProgramOptions options) const {
  std::vector<std::string> words = {path_};
  words.insert(words.end(), arguments.begin(), arguments.end());
  for (const std::string& pair : environment()) options.environment.push_back(pair);
  return runProgram(words, options);
}

FaultedRun InstalledProgram::runWithFault(const std::vector<std::string>& arguments,
                                          const std::string& armedBy,
                                          const std::optional<Fault>& fault) const {
  std::vector<std::string> words = {path_};
  words.insert(words.end(), arguments.begin(), arguments.end());
  ProgramOptions options;
  options.environment = environment();
  return test::runWithFault(words, armedBy, fault, options);
}

}  // namespace ostra::test
