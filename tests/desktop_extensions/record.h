#pragma once
#include <chrono>
#include <string>
#include <thread>

#include <unistd.h>

#include "tests/support/temporary_folder.h"

namespace ostra::test {

/// What the stand-in for the program got: its arguments, a line each, an empty line, and its input. Empty
/// when it does not come.
inline std::string recordAt(const std::string& path) {
  using namespace std::chrono_literals;
  for (int attempt = 0; attempt < 2000 && access(path.c_str(), F_OK) != 0; ++attempt) {
    std::this_thread::sleep_for(10ms);
  }
  if (access(path.c_str(), F_OK) != 0) return {};
  const Bytes bytes = readFile(path);
  return {bytes.begin(), bytes.end()};
}

inline std::string expectedRecord(const std::string& bundle, const std::string& paths) {
  return "--ui=desktop\n--bundle\n" + bundle + "\n--files-from=-\n\n" + paths;
}

}  // namespace ostra::test
