#include "tests/support/child.h"

#include <cstdio>
#include <exception>
#include <stdexcept>

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ostra::test {
namespace {

constexpr unsigned kOrdinaryUser = 65534;

[[noreturn]] void becomePart(const std::function<void()>& part) {
  try {
    part();
  } catch (const std::exception& error) {
    ADD_FAILURE() << "thrown: " << error.what();
  }
  std::fflush(nullptr);
  _exit(::testing::Test::HasFailure() ? 1 : 0);
}

}  // namespace

int runInChild(const std::function<void()>& part) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot fork");
  if (child == 0) becomePart(part);
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

int runInChildAsOrdinaryUser(const std::function<void()>& part) {
  return runInChild([&] {
    if (isRoot() &&
        (setgroups(0, nullptr) != 0 || setgid(kOrdinaryUser) != 0 || setuid(kOrdinaryUser) != 0)) {
      throw std::runtime_error("cannot give up root's rights");
    }
    part();
  });
}

bool isRoot() { return geteuid() == 0; }

void giveToOrdinaryUser(const char* path) {
  if (isRoot() && lchown(path, kOrdinaryUser, kOrdinaryUser) != 0)
    throw std::runtime_error("cannot give a file away");
}

}  // namespace ostra::test
