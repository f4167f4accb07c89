#include "platform/foundation/file_calls.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace ostra {
namespace {

/// 0, or the errno of a call that answers -1 when it fails.
template <class Call>
int errnoOf(Call call) {
  for (;;) {
    if (call() >= 0) return 0;
    if (errno != EINTR) return errno;
  }
}

}  // namespace

int FileCalls::write(int file, std::span<const std::uint8_t> bytes, std::size_t& written) {
  ssize_t count = 0;
  const int error = errnoOf([&] { return count = ::write(file, bytes.data(), bytes.size()); });
  if (error != 0) return error;
  written = static_cast<std::size_t>(count);
  return written > 0 || bytes.empty() ? 0 : EIO;
}

int FileCalls::reserve(int file, std::int64_t size) {
  // Not posix_fallocate: where the file system knows no reservation it writes to every block instead.
  return errnoOf([&] { return fallocate(file, FALLOC_FL_KEEP_SIZE, 0, size); });
}

int FileCalls::setLength(int file, std::int64_t size) {
  return errnoOf([&] { return ftruncate(file, size); });
}

int FileCalls::close(int file) {
  // The descriptor is gone even after EINTR: never closed twice.
  return ::close(file) == 0 || errno == EINTR ? 0 : errno;
}

int FileCalls::sync(int file) {
  return errnoOf([&] { return fsync(file); });
}

int FileCalls::syncFileSystem(int file) {
  return errnoOf([&] { return syncfs(file); });
}

int FileCalls::exchange(const Entry& a, const Entry& b) {
  return errnoOf(
      [&] { return renameat2(a.folder, a.name.c_str(), b.folder, b.name.c_str(), RENAME_EXCHANGE); });
}

int FileCalls::rename(const Entry& from, const Entry& to) {
  return errnoOf([&] { return renameat(from.folder, from.name.c_str(), to.folder, to.name.c_str()); });
}

int FileCalls::renameToNewName(const Entry& from, const Entry& to) {
  return errnoOf([&] {
    return renameat2(from.folder, from.name.c_str(), to.folder, to.name.c_str(), RENAME_NOREPLACE);
  });
}

int FileCalls::link(const Entry& from, const Entry& to) {
  return errnoOf([&] { return linkat(from.folder, from.name.c_str(), to.folder, to.name.c_str(), 0); });
}

int FileCalls::remove(const Entry& entry) {
  return errnoOf([&] { return unlinkat(entry.folder, entry.name.c_str(), 0); });
}

int FileCalls::setOwner(int file, std::int64_t user, std::int64_t group) {
  return errnoOf([&] { return fchown(file, static_cast<uid_t>(user), static_cast<gid_t>(group)); });
}

int FileCalls::setMode(int file, unsigned mode) {
  return errnoOf([&] { return fchmod(file, static_cast<mode_t>(mode)); });
}

int FileCalls::setAttribute(int file, const std::string& name, std::span<const char> value) {
  return errnoOf([&] { return fsetxattr(file, name.c_str(), value.data(), value.size(), 0); });
}

int FileCalls::removeAttribute(int file, const std::string& name) {
  return errnoOf([&] { return fremovexattr(file, name.c_str()); });
}

FileCalls& FileCalls::standard() {
  static FileCalls calls;
  return calls;
}

}  // namespace ostra
