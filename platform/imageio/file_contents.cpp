#include "platform/imageio/file_contents.h"

#include <cerrno>
#include <memory>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

namespace ostra {
namespace {

// How many of `size` bytes from the start of the file were there; nothing on an error.
std::optional<std::size_t> readFromStart(int file, std::uint8_t* into, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count = pread(file, into + done, size - done, static_cast<off_t>(done));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  return done;
}

}  // namespace

Bytes readBeginning(int file, std::size_t size) {
  Bytes bytes(size);
  bytes.resize(readFromStart(file, bytes.data(), size).value_or(0));
  return bytes;
}

Answer<SharedBytes> readContents(int file, std::uint64_t limit) {
  struct stat status {};
  if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size < 0)
    return Fault{FaultKind::notImage};
  const auto size = static_cast<std::uint64_t>(status.st_size);
  if (size > limit) return Fault{FaultKind::limit, LimitName::decodedBytes};
  const std::shared_ptr<std::uint8_t[]> memory(new std::uint8_t[size + 1]);
  const auto done = readFromStart(file, memory.get(), size);
  if (!done) return Fault{FaultKind::damaged};
  return SharedBytes{memory, ByteView(memory.get(), *done)};
}

}  // namespace ostra
