#pragma once
#include <csignal>
#include <string>

#include <fcntl.h>

#include "platform/imageio/decoder/confined_door.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {

/// A door whose decoders run `serve`.
struct Confined {
  explicit Confined(Zygote::Serve serve = serveTask, KernelConfinement kernel = KernelConfinement::detect())
      : zygote(kernel, std::move(serve)) {
    std::signal(SIGPIPE, SIG_IGN);  // as the program does
  }

  Zygote zygote;
  ConfinedDoor door{zygote};
};

inline UniqueFd openedFile(const std::string& path) {
  return UniqueFd(open(path.c_str(), O_RDONLY | O_CLOEXEC));
}

/// A file of these bytes, open; it has no name any more.
inline UniqueFd fileOf(ByteView bytes) {
  const TemporaryFolder folder;
  writeFile(folder.path("picture"), bytes);
  return openedFile(folder.path("picture"));
}

}  // namespace ostra::test
