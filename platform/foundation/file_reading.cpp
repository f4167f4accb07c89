#include "platform/foundation/file_reading.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/foundation/file_error.h"
#include "platform/foundation/unique_fd.h"

namespace ostra {
namespace {

// Most are property lists of two kilobytes, of which every start reads several.
constexpr std::size_t kPiece = std::size_t{8} << 10;

}  // namespace

Bytes readSmallFile(const URL& url, std::size_t most) {
  const std::string& path = filePath(url, FileAccess::read);
  const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file) throw fileError(errno, FileAccess::read, path);
  Bytes bytes;
  for (;;) {
    const std::size_t filled = bytes.size();
    if (filled > most) throw fileError(EFBIG, FileAccess::read, path);
    bytes.resize(filled + kPiece);
    const ssize_t got = read(file.get(), bytes.data() + filled, kPiece);
    bytes.resize(filled + (got > 0 ? static_cast<std::size_t>(got) : 0));
    if (got == 0) return bytes;
    if (got < 0 && errno != EINTR) throw fileError(errno, FileAccess::read, path);
  }
}

}  // namespace ostra
