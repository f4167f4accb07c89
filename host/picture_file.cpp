#include "host/picture_file.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/foundation/file_version.h"
#include "platform/foundation/unique_fd.h"

namespace ostra {
namespace {

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
  const std::string sentence = "“" + URL::fileURLWithPath(path).lastPathComponent() + "” " + reason;
  throw NSError(
      NSCocoaErrorDomain, NSFileReadUnknownError,
      {{std::string(NSLocalizedDescriptionKey), sentence}, {std::string(NSFilePathErrorKey), path}});
}

bool isLink(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

/// The sentence of the failed call where it tells people enough, else one with the system's own words.
[[noreturn]] void refuseForErrno(const std::string& path, int error) {
  if (error == ENOENT && isLink(path)) refuse(path, "is a link to a file that does not exist.");
  if (error == ELOOP) refuse(path, "is a link that leads back to itself.");
  if (error == ENOTDIR) refuse(path, "could not be opened, because a part of its path is not a folder.");
  const NSError known = fileError(error, FileAccess::read, path);
  if (known.code() == NSFileReadNoPermissionError || known.code() == NSFileReadNoSuchFileError) throw known;
  refuse(path, std::string("could not be opened: ") + std::strerror(error) + ".");
}

void requireRegular(const std::string& path, mode_t mode) {
  if (S_ISDIR(mode)) refuse(path, "is a folder, not a file.");
  if (S_ISFIFO(mode)) refuse(path, "is a pipe, not a file.");
  if (S_ISSOCK(mode)) refuse(path, "is a socket, not a file.");
  if (S_ISCHR(mode) || S_ISBLK(mode)) refuse(path, "is a device, not a file.");
}

}  // namespace

std::string absolutePath(const std::string& path) {
  if (!path.empty() && path.front() == '/') return path;
  char* folder = getcwd(nullptr, 0);
  if (folder == nullptr) return path;
  std::string absolute = folder;
  free(folder);
  if (absolute.back() != '/') absolute += '/';
  return absolute + path;
}

FileVersion openedVersion(const std::string& path) {
  struct stat status {};
  // Looked at before it is opened: opening alone already wakes a pipe's writer or rewinds a tape.
  if (stat(path.c_str(), &status) != 0) refuseForErrno(path, errno);
  requireRegular(path, status.st_mode);
  const UniqueFd file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file || fstat(file.get(), &status) != 0) refuseForErrno(path, errno);
  requireRegular(path, status.st_mode);
  return fileVersionOf(status);
}

}  // namespace ostra
