#include "tests/support/orphans.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ostra::test {
namespace {

constexpr auto kPatience = std::chrono::seconds(5);

pid_t parentOf(const std::filesystem::path& process) {
  std::ifstream file(process / "stat");
  std::string text;
  std::getline(file, text);
  // The name may hold anything; what follows its last bracket is the state and the parent.
  const std::size_t bracket = text.rfind(')');
  return bracket == std::string::npos ? 0 : std::stoi(text.substr(std::min(bracket + 4, text.size() - 1)));
}

std::vector<pid_t> children() {
  std::vector<pid_t> found;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (!std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isdigit(c) != 0; }))
      continue;
    if (parentOf(entry.path()) == getpid()) found.push_back(std::stoi(name));
  }
  return found;
}

/// Whether every child has ended by then.
bool waitForChildren(std::chrono::steady_clock::time_point deadline) {
  for (;;) {
    const pid_t ended = waitpid(-1, nullptr, __WALL | WNOHANG);
    if (ended > 0 || (ended < 0 && errno == EINTR)) continue;
    if (ended < 0) return true;
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

}  // namespace

Orphanage::Orphanage() {
  prctl(PR_GET_CHILD_SUBREAPER, &before_);
  prctl(PR_SET_CHILD_SUBREAPER, 1);
}

Orphanage::~Orphanage() { prctl(PR_SET_CHILD_SUBREAPER, before_); }

int Orphanage::endChildren() {
  int ended = 0;
  while (!waitForChildren(std::chrono::steady_clock::now() + kPatience)) {
    for (const pid_t child : children()) {
      kill(child, SIGKILL);
      ++ended;
    }
  }
  return ended;
}

}  // namespace ostra::test
