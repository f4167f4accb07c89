#pragma once
#include <functional>

namespace ostra::test {

/// How a process of its own ended that ran a part of a test: 0 when it came to its end and none of its
/// expectations failed, 1 when one did, 128 + n when signal n ended it.
int runInChild(const std::function<void()>& part);

/// The same as nobody (65534), where the test runs as root.
int runInChildAsOrdinaryUser(const std::function<void()>& part);

bool isRoot();

/// Gives a file or folder to the user of `runInChildAsOrdinaryUser`.
void giveToOrdinaryUser(const char* path);

/// Starts a test that only root can arrange.
#define OSTRA_NEEDS_ROOT(why)                \
  if (!::ostra::test::isRoot()) {            \
    GTEST_SKIP() << "only root can " << why; \
  }

}  // namespace ostra::test
