#include "tests/support/terminal_session.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include <grp.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ostra::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr unsigned kOrdinaryUser = 65534;
constexpr auto kPatience = 20s;

[[noreturn]] void becomeProgram(const std::vector<std::string>& arguments,
                                const std::vector<std::string>& environment, bool asOrdinaryUser) {
  if (asOrdinaryUser && geteuid() == 0) {
    if (setgroups(0, nullptr) != 0 || setgid(kOrdinaryUser) != 0 || setuid(kOrdinaryUser) != 0) _exit(126);
  }
  for (const std::string& pair : environment) putenv(const_cast<char*>(pair.c_str()));
  std::vector<char*> words;
  for (const std::string& word : arguments) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  execvp(words[0], words.data());
  _exit(127);
}

}  // namespace

TerminalSession::TerminalSession(const std::vector<std::string>& arguments,
                                 const std::vector<std::string>& environment, bool asOrdinaryUser) {
  int person = -1;
  winsize size{50, 100, 0, 0};
  program_ = forkpty(&person, nullptr, nullptr, &size);
  if (program_ < 0) throw std::runtime_error("no terminal");
  if (program_ == 0) becomeProgram(arguments, environment, asOrdinaryUser);
  person_ = UniqueFd(person);
}

TerminalSession::~TerminalSession() {
  if (program_ < 0) return;
  kill(program_, SIGKILL);
  waitpid(program_, nullptr, 0);
}

/// False at the end of what the program writes, or when a moment passed without anything.
bool TerminalSession::readMore() {
  pollfd event{person_.get(), POLLIN, 0};
  if (poll(&event, 1, 50) <= 0) return false;
  char bytes[4096];
  const ssize_t got = read(person_.get(), bytes, sizeof bytes);
  if (got <= 0) return false;
  screen_.append(bytes, static_cast<std::size_t>(got));
  return true;
}

bool TerminalSession::waitFor(const std::string& text) {
  for (const auto start = Clock::now(); Clock::now() - start < kPatience;) {
    if (screen_.find(text) != std::string::npos) return true;
    readMore();
  }
  return false;
}

void TerminalSession::type(const std::string& keys) const {
  if (write(person_.get(), keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
    throw std::runtime_error("the terminal takes no keys");
}

void TerminalSession::signal(int number) const { kill(program_, number); }

int TerminalSession::waitForEnd() {
  for (const auto start = Clock::now(); Clock::now() - start < kPatience;) {
    while (readMore()) {
    }
    int status = 0;
    if (waitpid(program_, &status, WNOHANG) == 0) continue;
    program_ = -1;
    while (readMore()) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  return -1;
}

}  // namespace ostra::test
