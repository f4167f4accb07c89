#include "tests/faults/mounted_image.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

#include <fcntl.h>
#include <linux/ioctl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/foundation/unique_fd.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

constexpr unsigned long kShutdown = _IOR('X', 125, std::uint32_t);
constexpr std::uint32_t kFlushLog = 1;
constexpr std::uint32_t kFlushNothing = 2;

void demand(const std::vector<std::string>& command) {
  const ProgramResult result = runProgram(command);
  if (result.status != 0) throw std::runtime_error(command[0] + ": " + result.errors);
}

UniqueFd opened(const std::string& folder) {
  UniqueFd file(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!file) throw std::runtime_error("cannot open " + folder + ": " + std::strerror(errno));
  return file;
}

}  // namespace

void MountedImage::flush() const {
  if (syncfs(opened(folder_).get()) != 0) throw std::runtime_error("cannot flush " + folder_);
}

void MountedImage::cutOff(bool withLog) const {
  const std::uint32_t how = withLog ? kFlushLog : kFlushNothing;
  if (ioctl(opened(folder_).get(), kShutdown, &how) != 0)
    throw std::runtime_error("cannot cut off " + folder_ + ": " + std::strerror(errno));
}

void MountedImage::mountAgain() const {
  demand({"umount", folder_});
  demand({"mount", "-o", "loop", image_, folder_});
}

}  // namespace ostra::test
