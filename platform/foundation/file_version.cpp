#include "platform/foundation/file_version.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace ostra {
namespace {

/// Some file systems hold years that do not fit; those times wrap round, and are still only compared.
std::int64_t nanoseconds(const timespec& time) {
  const auto seconds = static_cast<std::uint64_t>(time.tv_sec);
  return static_cast<std::int64_t>(seconds * 1'000'000'000U + static_cast<std::uint64_t>(time.tv_nsec));
}

}  // namespace

FileVersion fileVersionOf(const struct stat& status) {
  return {status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim),
          nanoseconds(status.st_ctim)};
}

std::optional<FileVersion> openFileVersion(int file) {
  struct stat status = {};
  if (fstat(file, &status) != 0) return std::nullopt;
  return fileVersionOf(status);
}

std::optional<FileVersion> entryVersion(int folder, const std::string& name) {
  struct stat status = {};
  if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
  return fileVersionOf(status);
}

bool isSameFile(const FileVersion& a, const FileVersion& b) {
  return a.device == b.device && a.inode == b.inode;
}

bool isSameContents(const FileVersion& a, const FileVersion& b) {
  return isSameFile(a, b) && a.size == b.size && a.modified == b.modified;
}

}  // namespace ostra
