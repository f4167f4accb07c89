#include "tests/support/program.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/temporary_folder.h"

namespace ostra::test {
namespace {

constexpr unsigned kOrdinaryUser = 65534;

[[noreturn]] void becomeProgram(const std::vector<std::string>& arguments, const ProgramOptions& options,
                                const std::string& in, const std::string& out, const std::string& err) {
  const int input = open(in.c_str(), O_RDONLY | O_CLOEXEC);
  const int output = open(out.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  const int errors = open(err.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  if (dup2(input, 0) < 0 || dup2(output, 1) < 0 || dup2(errors, 2) < 0) _exit(126);
  if (options.asOrdinaryUser && geteuid() == 0) {
    if (setgroups(0, nullptr) != 0 || setgid(kOrdinaryUser) != 0 || setuid(kOrdinaryUser) != 0) _exit(126);
  }
  for (const std::string& pair : options.environment) putenv(const_cast<char*>(pair.c_str()));
  std::vector<char*> words;
  for (const std::string& word : arguments) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  execvp(words[0], words.data());
  _exit(127);
}

std::string textOf(const std::string& path) {
  if (!std::filesystem::exists(path)) return {};
  const Bytes bytes = readFile(path);
  return std::string(bytes.begin(), bytes.end());
}

}  // namespace

ProgramResult runProgram(const std::vector<std::string>& arguments, const ProgramOptions& options) {
  const TemporaryFolder folder;
  writeFile(folder.path("in"), options.input);
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot fork");
  if (child == 0)
    becomeProgram(arguments, options, folder.path("in"), folder.path("out"), folder.path("err"));
  int status = 0;
  rusage usage{};
  while (wait4(child, &status, options.watch ? WNOHANG : 0, &usage) <= 0) {
    if (!options.watch) continue;
    options.watch(child);
    std::this_thread::sleep_for(options.pause);
  }
  const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return {code, textOf(folder.path("out")), textOf(folder.path("err")),
          static_cast<std::size_t>(usage.ru_maxrss) * 1024};
}

bool haveProgram(const std::string& name) {
  std::istringstream folders(std::getenv("PATH") != nullptr ? std::getenv("PATH") : "");
  for (std::string folder; std::getline(folders, folder, ':');) {
    if (access((folder + "/" + name).c_str(), X_OK) == 0) return true;
  }
  return false;
}

bool inContinuousIntegration() { return std::getenv("CI") != nullptr; }

}  // namespace ostra::test
